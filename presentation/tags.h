/// The attributes that presentation data is read from.
#pragma once

#include "foundation/dicom/model/tags.h"

#include <cstdint>

namespace quorvex::tag {

inline constexpr std::uint32_t kReferencedImageSequence = 0x00081140;
inline constexpr std::uint32_t kReferencedSeriesSequence = 0x00081115;
inline constexpr std::uint32_t kReferencedSOPClassUID = 0x00081150;
inline constexpr std::uint32_t kReferencedSOPInstanceUID = 0x00081155;
inline constexpr std::uint32_t kReferencedFrameNumber = 0x00081160;

inline constexpr std::uint32_t kShutterShape = 0x00181600;
inline constexpr std::uint32_t kShutterLeft = 0x00181602;
inline constexpr std::uint32_t kShutterRight = 0x00181604;
inline constexpr std::uint32_t kShutterUpper = 0x00181606;
inline constexpr std::uint32_t kShutterLower = 0x00181608;
inline constexpr std::uint32_t kShutterCenter = 0x00181610;
inline constexpr std::uint32_t kShutterRadius = 0x00181612;
inline constexpr std::uint32_t kShutterVertices = 0x00181620;
inline constexpr std::uint32_t kShutterPresentationValue = 0x00181622;
inline constexpr std::uint32_t kShutterOverlayGroup = 0x00181623;

inline constexpr std::uint32_t kSeriesInstanceUID = 0x0020000E;

inline constexpr std::uint32_t kPixelAspectRatio = 0x00280034;
inline constexpr std::uint32_t kRecommendedViewingMode = 0x00281090;
inline constexpr std::uint32_t kRescaleType = 0x00281054;
inline constexpr std::uint32_t kModalityLUTSequence = 0x00283000;
inline constexpr std::uint32_t kLUTDescriptor = 0x00283002;
inline constexpr std::uint32_t kLUTData = 0x00283006;
inline constexpr std::uint32_t kVOILUTSequence = 0x00283010;
inline constexpr std::uint32_t kSoftcopyVOILUTSequence = 0x00283110;
inline constexpr std::uint32_t kMaskSubtractionSequence = 0x00286100;
inline constexpr std::uint32_t kMaskOperation = 0x00286101;
inline constexpr std::uint32_t kApplicableFrameRange = 0x00286102;
inline constexpr std::uint32_t kMaskFrameNumbers = 0x00286110;
inline constexpr std::uint32_t kContrastFrameAveraging = 0x00286112;
inline constexpr std::uint32_t kMaskSubPixelShift = 0x00286114;
inline constexpr std::uint32_t kTIDOffset = 0x00286120;

inline constexpr std::uint32_t kPresentationLUTSequence = 0x20500010;
inline constexpr std::uint32_t kPresentationLUTShape = 0x20500020;

inline constexpr std::uint32_t kGraphicAnnotationSequence = 0x00700001;
inline constexpr std::uint32_t kGraphicLayer = 0x00700002;
inline constexpr std::uint32_t kBoundingBoxAnnotationUnits = 0x00700003;
inline constexpr std::uint32_t kAnchorPointAnnotationUnits = 0x00700004;
inline constexpr std::uint32_t kGraphicAnnotationUnits = 0x00700005;
inline constexpr std::uint32_t kUnformattedTextValue = 0x00700006;
inline constexpr std::uint32_t kTextObjectSequence = 0x00700008;
inline constexpr std::uint32_t kGraphicObjectSequence = 0x00700009;
inline constexpr std::uint32_t kBoundingBoxTopLeft = 0x00700010;
inline constexpr std::uint32_t kBoundingBoxBottomRight = 0x00700011;
inline constexpr std::uint32_t kBoundingBoxJustification = 0x00700012;
inline constexpr std::uint32_t kAnchorPoint = 0x00700014;
inline constexpr std::uint32_t kAnchorPointVisibility = 0x00700015;
inline constexpr std::uint32_t kGraphicDimensions = 0x00700020;
inline constexpr std::uint32_t kNumberOfGraphicPoints = 0x00700021;
inline constexpr std::uint32_t kGraphicData = 0x00700022;
inline constexpr std::uint32_t kGraphicType = 0x00700023;
inline constexpr std::uint32_t kGraphicFilled = 0x00700024;

inline constexpr std::uint32_t kImageHorizontalFlip = 0x00700041;
inline constexpr std::uint32_t kImageRotation = 0x00700042;
inline constexpr std::uint32_t kDisplayedAreaTopLeft = 0x00700052;
inline constexpr std::uint32_t kDisplayedAreaBottomRight = 0x00700053;
inline constexpr std::uint32_t kDisplayedAreaSelectionSequence = 0x0070005A;
inline constexpr std::uint32_t kGraphicLayerSequence = 0x00700060;
inline constexpr std::uint32_t kGraphicLayerOrder = 0x00700062;
inline constexpr std::uint32_t kContentLabel = 0x00700080;
inline constexpr std::uint32_t kContentDescription = 0x00700081;
inline constexpr std::uint32_t kPresentationCreationDate = 0x00700082;
inline constexpr std::uint32_t kPresentationCreationTime = 0x00700083;
inline constexpr std::uint32_t kContentCreatorName = 0x00700084;
inline constexpr std::uint32_t kPresentationSizeMode = 0x00700100;
inline constexpr std::uint32_t kPresentationPixelSpacing = 0x00700101;
inline constexpr std::uint32_t kPresentationPixelAspectRatio = 0x00700102;
inline constexpr std::uint32_t kPresentationPixelMagnification = 0x00700103;

}  // namespace quorvex::tag

/// The attributes that the library reads and writes, by name.
///
/// A name is "k" and the keyword of the standard (DICOM PS3.6), its number the group in the high
/// half. A host that needs another attribute writes its number: the operations take any tag.
#pragma once

#include <cstdint>

namespace quorvex::tag {

// File meta information
inline constexpr std::uint32_t kFileMetaInformationGroupLength = 0x00020000;
inline constexpr std::uint32_t kFileMetaInformationVersion = 0x00020001;
inline constexpr std::uint32_t kMediaStorageSOPClassUID = 0x00020002;
inline constexpr std::uint32_t kMediaStorageSOPInstanceUID = 0x00020003;
inline constexpr std::uint32_t kTransferSyntaxUID = 0x00020010;
inline constexpr std::uint32_t kImplementationClassUID = 0x00020012;
inline constexpr std::uint32_t kImplementationVersionName = 0x00020013;

// Identification
inline constexpr std::uint32_t kSpecificCharacterSet = 0x00080005;
inline constexpr std::uint32_t kImageType = 0x00080008;
inline constexpr std::uint32_t kInstanceCreationDate = 0x00080012;
inline constexpr std::uint32_t kInstanceCreationTime = 0x00080013;
inline constexpr std::uint32_t kInstanceCreatorUID = 0x00080014;
inline constexpr std::uint32_t kSOPClassUID = 0x00080016;
inline constexpr std::uint32_t kSOPInstanceUID = 0x00080018;
inline constexpr std::uint32_t kStudyDate = 0x00080020;
inline constexpr std::uint32_t kSeriesDate = 0x00080021;
inline constexpr std::uint32_t kContentDate = 0x00080023;
inline constexpr std::uint32_t kStudyTime = 0x00080030;
inline constexpr std::uint32_t kSeriesTime = 0x00080031;
inline constexpr std::uint32_t kContentTime = 0x00080033;
inline constexpr std::uint32_t kAccessionNumber = 0x00080050;
inline constexpr std::uint32_t kIssuerOfAccessionNumberSequence = 0x00080051;
inline constexpr std::uint32_t kModality = 0x00080060;
inline constexpr std::uint32_t kConversionType = 0x00080064;
inline constexpr std::uint32_t kManufacturer = 0x00080070;
inline constexpr std::uint32_t kInstitutionName = 0x00080080;
inline constexpr std::uint32_t kReferringPhysicianName = 0x00080090;
inline constexpr std::uint32_t kCodeValue = 0x00080100;
inline constexpr std::uint32_t kCodingSchemeDesignator = 0x00080102;
inline constexpr std::uint32_t kCodeMeaning = 0x00080104;
inline constexpr std::uint32_t kMappingResource = 0x00080105;
inline constexpr std::uint32_t kTimezoneOffsetFromUTC = 0x00080201;
inline constexpr std::uint32_t kStudyDescription = 0x00081030;
inline constexpr std::uint32_t kSeriesDescription = 0x0008103E;
inline constexpr std::uint32_t kProcedureCodeSequence = 0x00081032;
inline constexpr std::uint32_t kManufacturerModelName = 0x00081090;
inline constexpr std::uint32_t kReferencedPerformedProcedureStepSequence = 0x00081111;
inline constexpr std::uint32_t kReferencedSeriesSequence = 0x00081115;
inline constexpr std::uint32_t kReferencedImageSequence = 0x00081140;
inline constexpr std::uint32_t kReferencedSOPClassUID = 0x00081150;
inline constexpr std::uint32_t kReferencedSOPInstanceUID = 0x00081155;
inline constexpr std::uint32_t kReferencedFrameNumber = 0x00081160;
inline constexpr std::uint32_t kReferencedSOPSequence = 0x00081199;
inline constexpr std::uint32_t kDerivationDescription = 0x00082111;
inline constexpr std::uint32_t kSourceImageSequence = 0x00082112;
inline constexpr std::uint32_t kFrameType = 0x00089007;
inline constexpr std::uint32_t kDerivationCodeSequence = 0x00089215;

// Patient
inline constexpr std::uint32_t kPatientName = 0x00100010;
inline constexpr std::uint32_t kPatientID = 0x00100020;
inline constexpr std::uint32_t kPatientBirthDate = 0x00100030;
inline constexpr std::uint32_t kPatientBirthTime = 0x00100032;
inline constexpr std::uint32_t kPatientSex = 0x00100040;
inline constexpr std::uint32_t kPatientAge = 0x00101010;
inline constexpr std::uint32_t kPatientSize = 0x00101020;
inline constexpr std::uint32_t kPatientWeight = 0x00101030;
inline constexpr std::uint32_t kAdditionalPatientHistory = 0x001021B0;
inline constexpr std::uint32_t kPatientComments = 0x00104000;

// Acquisition
inline constexpr std::uint32_t kBodyPartExamined = 0x00180015;
inline constexpr std::uint32_t kCineRate = 0x00180040;
inline constexpr std::uint32_t kSliceThickness = 0x00180050;
inline constexpr std::uint32_t kKVP = 0x00180060;
inline constexpr std::uint32_t kSpacingBetweenSlices = 0x00180088;
inline constexpr std::uint32_t kSoftwareVersions = 0x00181020;
inline constexpr std::uint32_t kFrameTime = 0x00181063;
inline constexpr std::uint32_t kImagerPixelSpacing = 0x00181164;
inline constexpr std::uint32_t kShutterShape = 0x00181600;
inline constexpr std::uint32_t kShutterLeftVerticalEdge = 0x00181602;
inline constexpr std::uint32_t kShutterRightVerticalEdge = 0x00181604;
inline constexpr std::uint32_t kShutterUpperHorizontalEdge = 0x00181606;
inline constexpr std::uint32_t kShutterLowerHorizontalEdge = 0x00181608;
inline constexpr std::uint32_t kCenterOfCircularShutter = 0x00181610;
inline constexpr std::uint32_t kRadiusOfCircularShutter = 0x00181612;
inline constexpr std::uint32_t kVerticesOfThePolygonalShutter = 0x00181620;
inline constexpr std::uint32_t kShutterPresentationValue = 0x00181622;
inline constexpr std::uint32_t kShutterOverlayGroup = 0x00181623;
inline constexpr std::uint32_t kShutterPresentationColorCIELabValue = 0x00181624;
inline constexpr std::uint32_t kPageNumberVector = 0x00182001;
inline constexpr std::uint32_t kNominalScannedPixelSpacing = 0x00182010;
inline constexpr std::uint32_t kPatientPosition = 0x00185100;
inline constexpr std::uint32_t kViewPosition = 0x00185101;

// Relationship
inline constexpr std::uint32_t kStudyInstanceUID = 0x0020000D;
inline constexpr std::uint32_t kSeriesInstanceUID = 0x0020000E;
inline constexpr std::uint32_t kStudyID = 0x00200010;
inline constexpr std::uint32_t kSeriesNumber = 0x00200011;
inline constexpr std::uint32_t kAcquisitionNumber = 0x00200012;
inline constexpr std::uint32_t kInstanceNumber = 0x00200013;
inline constexpr std::uint32_t kPatientOrientation = 0x00200020;
inline constexpr std::uint32_t kImagePositionPatient = 0x00200032;
inline constexpr std::uint32_t kImageOrientationPatient = 0x00200037;
inline constexpr std::uint32_t kFrameOfReferenceUID = 0x00200052;
inline constexpr std::uint32_t kLaterality = 0x00200060;
inline constexpr std::uint32_t kImageLaterality = 0x00200062;
inline constexpr std::uint32_t kPositionReferenceIndicator = 0x00201040;
inline constexpr std::uint32_t kSliceLocation = 0x00201041;
inline constexpr std::uint32_t kConcatenationFrameOffsetNumber = 0x00209228;
inline constexpr std::uint32_t kDimensionOrganizationType = 0x00209311;

// Image pixels and how they are shown
inline constexpr std::uint32_t kSamplesPerPixel = 0x00280002;
inline constexpr std::uint32_t kPhotometricInterpretation = 0x00280004;
inline constexpr std::uint32_t kPlanarConfiguration = 0x00280006;
inline constexpr std::uint32_t kNumberOfFrames = 0x00280008;
inline constexpr std::uint32_t kFrameIncrementPointer = 0x00280009;
inline constexpr std::uint32_t kRows = 0x00280010;
inline constexpr std::uint32_t kColumns = 0x00280011;
inline constexpr std::uint32_t kUltrasoundColorDataPresent = 0x00280014;
inline constexpr std::uint32_t kPixelSpacing = 0x00280030;
inline constexpr std::uint32_t kPixelAspectRatio = 0x00280034;
inline constexpr std::uint32_t kBitsAllocated = 0x00280100;
inline constexpr std::uint32_t kBitsStored = 0x00280101;
inline constexpr std::uint32_t kHighBit = 0x00280102;
inline constexpr std::uint32_t kPixelRepresentation = 0x00280103;
inline constexpr std::uint32_t kSmallestImagePixelValue = 0x00280106;
inline constexpr std::uint32_t kLargestImagePixelValue = 0x00280107;
inline constexpr std::uint32_t kSmallestPixelValueInSeries = 0x00280108;
inline constexpr std::uint32_t kLargestPixelValueInSeries = 0x00280109;
inline constexpr std::uint32_t kPixelPaddingValue = 0x00280120;
inline constexpr std::uint32_t kPixelPaddingRangeLimit = 0x00280121;
inline constexpr std::uint32_t kFloatPixelPaddingValue = 0x00280122;
inline constexpr std::uint32_t kDoubleFloatPixelPaddingValue = 0x00280123;
inline constexpr std::uint32_t kFloatPixelPaddingRangeLimit = 0x00280124;
inline constexpr std::uint32_t kDoubleFloatPixelPaddingRangeLimit = 0x00280125;
inline constexpr std::uint32_t kBurnedInAnnotation = 0x00280301;
inline constexpr std::uint32_t kLongitudinalTemporalInformationModified = 0x00280303;
inline constexpr std::uint32_t kWindowCenter = 0x00281050;
inline constexpr std::uint32_t kWindowWidth = 0x00281051;
inline constexpr std::uint32_t kRescaleIntercept = 0x00281052;
inline constexpr std::uint32_t kRescaleSlope = 0x00281053;
inline constexpr std::uint32_t kRescaleType = 0x00281054;
inline constexpr std::uint32_t kWindowCenterWidthExplanation = 0x00281055;
inline constexpr std::uint32_t kVOILUTFunction = 0x00281056;
inline constexpr std::uint32_t kRecommendedViewingMode = 0x00281090;
inline constexpr std::uint32_t kGrayLookupTableDescriptor = 0x00281100;
inline constexpr std::uint32_t kRedPaletteColorLookupTableDescriptor = 0x00281101;
inline constexpr std::uint32_t kGreenPaletteColorLookupTableDescriptor = 0x00281102;
inline constexpr std::uint32_t kBluePaletteColorLookupTableDescriptor = 0x00281103;
inline constexpr std::uint32_t kLargeRedPaletteColorLookupTableDescriptor = 0x00281111;
inline constexpr std::uint32_t kLargeGreenPaletteColorLookupTableDescriptor = 0x00281112;
inline constexpr std::uint32_t kLargeBluePaletteColorLookupTableDescriptor = 0x00281113;
inline constexpr std::uint32_t kRedPaletteColorLookupTableData = 0x00281201;
inline constexpr std::uint32_t kGreenPaletteColorLookupTableData = 0x00281202;
inline constexpr std::uint32_t kBluePaletteColorLookupTableData = 0x00281203;
inline constexpr std::uint32_t kSegmentedRedPaletteColorLookupTableData = 0x00281221;
inline constexpr std::uint32_t kSegmentedGreenPaletteColorLookupTableData = 0x00281222;
inline constexpr std::uint32_t kSegmentedBluePaletteColorLookupTableData = 0x00281223;
inline constexpr std::uint32_t kLossyImageCompression = 0x00282110;
inline constexpr std::uint32_t kLossyImageCompressionRatio = 0x00282112;
inline constexpr std::uint32_t kLossyImageCompressionMethod = 0x00282114;
inline constexpr std::uint32_t kModalityLUTSequence = 0x00283000;
inline constexpr std::uint32_t kLUTDescriptor = 0x00283002;
inline constexpr std::uint32_t kLUTExplanation = 0x00283003;
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
inline constexpr std::uint32_t kPixelMeasuresSequence = 0x00289110;
inline constexpr std::uint32_t kFrameVOILUTSequence = 0x00289132;
inline constexpr std::uint32_t kPixelValueTransformationSequence = 0x00289145;

// Pictures in tiles
inline constexpr std::uint32_t kZOffsetInSlideCoordinateSystem = 0x0040074A;
inline constexpr std::uint32_t kTotalPixelMatrixColumns = 0x00480006;
inline constexpr std::uint32_t kTotalPixelMatrixRows = 0x00480007;
inline constexpr std::uint32_t kRecommendedAbsentPixelCIELabValue = 0x00480015;
inline constexpr std::uint32_t kOpticalPathSequence = 0x00480105;
inline constexpr std::uint32_t kOpticalPathIdentifier = 0x00480106;
inline constexpr std::uint32_t kOpticalPathIdentificationSequence = 0x00480207;
inline constexpr std::uint32_t kPlanePositionSlideSequence = 0x0048021A;
inline constexpr std::uint32_t kColumnPositionInTotalImagePixelMatrix = 0x0048021E;
inline constexpr std::uint32_t kRowPositionInTotalImagePixelMatrix = 0x0048021F;
inline constexpr std::uint32_t kNumberOfOpticalPaths = 0x00480302;
inline constexpr std::uint32_t kTotalPixelMatrixFocalPlanes = 0x00480303;

// Content
inline constexpr std::uint32_t kPerformedProcedureStepStartDate = 0x00400244;
inline constexpr std::uint32_t kPerformedProcedureStepStartTime = 0x00400245;
inline constexpr std::uint32_t kPerformedProcedureStepID = 0x00400253;
inline constexpr std::uint32_t kPerformedProcedureStepDescription = 0x00400254;
inline constexpr std::uint32_t kRelationshipType = 0x0040A010;
inline constexpr std::uint32_t kValueType = 0x0040A040;
inline constexpr std::uint32_t kConceptNameCodeSequence = 0x0040A043;
inline constexpr std::uint32_t kContinuityOfContent = 0x0040A050;
inline constexpr std::uint32_t kTextValue = 0x0040A160;
inline constexpr std::uint32_t kPurposeOfReferenceCodeSequence = 0x0040A170;
inline constexpr std::uint32_t kCurrentRequestedProcedureEvidenceSequence = 0x0040A375;
inline constexpr std::uint32_t kContentTemplateSequence = 0x0040A504;
inline constexpr std::uint32_t kContentSequence = 0x0040A730;
inline constexpr std::uint32_t kTemplateIdentifier = 0x0040DB00;
inline constexpr std::uint32_t kIconImageSequence = 0x00880200;

// Presentation
inline constexpr std::uint32_t kGraphicAnnotationSequence = 0x00700001;
inline constexpr std::uint32_t kGraphicLayer = 0x00700002;
inline constexpr std::uint32_t kBoundingBoxAnnotationUnits = 0x00700003;
inline constexpr std::uint32_t kAnchorPointAnnotationUnits = 0x00700004;
inline constexpr std::uint32_t kGraphicAnnotationUnits = 0x00700005;
inline constexpr std::uint32_t kUnformattedTextValue = 0x00700006;
inline constexpr std::uint32_t kTextObjectSequence = 0x00700008;
inline constexpr std::uint32_t kGraphicObjectSequence = 0x00700009;
inline constexpr std::uint32_t kBoundingBoxTopLeftHandCorner = 0x00700010;
inline constexpr std::uint32_t kBoundingBoxBottomRightHandCorner = 0x00700011;
inline constexpr std::uint32_t kBoundingBoxTextHorizontalJustification = 0x00700012;
inline constexpr std::uint32_t kAnchorPoint = 0x00700014;
inline constexpr std::uint32_t kAnchorPointVisibility = 0x00700015;
inline constexpr std::uint32_t kGraphicDimensions = 0x00700020;
inline constexpr std::uint32_t kNumberOfGraphicPoints = 0x00700021;
inline constexpr std::uint32_t kGraphicData = 0x00700022;
inline constexpr std::uint32_t kGraphicType = 0x00700023;
inline constexpr std::uint32_t kGraphicFilled = 0x00700024;
inline constexpr std::uint32_t kImageHorizontalFlip = 0x00700041;
inline constexpr std::uint32_t kImageRotation = 0x00700042;
inline constexpr std::uint32_t kDisplayedAreaTopLeftHandCorner = 0x00700052;
inline constexpr std::uint32_t kDisplayedAreaBottomRightHandCorner = 0x00700053;
inline constexpr std::uint32_t kDisplayedAreaSelectionSequence = 0x0070005A;
inline constexpr std::uint32_t kGraphicLayerSequence = 0x00700060;
inline constexpr std::uint32_t kGraphicLayerOrder = 0x00700062;
inline constexpr std::uint32_t kGraphicLayerRecommendedDisplayGrayscaleValue = 0x00700066;
inline constexpr std::uint32_t kGraphicLayerDescription = 0x00700068;
inline constexpr std::uint32_t kContentLabel = 0x00700080;
inline constexpr std::uint32_t kContentDescription = 0x00700081;
inline constexpr std::uint32_t kPresentationCreationDate = 0x00700082;
inline constexpr std::uint32_t kPresentationCreationTime = 0x00700083;
inline constexpr std::uint32_t kContentCreatorName = 0x00700084;
inline constexpr std::uint32_t kContentCreatorIdentificationCodeSequence = 0x00700086;
inline constexpr std::uint32_t kAlternateContentDescriptionSequence = 0x00700087;
inline constexpr std::uint32_t kPresentationSizeMode = 0x00700100;
inline constexpr std::uint32_t kPresentationPixelSpacing = 0x00700101;
inline constexpr std::uint32_t kPresentationPixelAspectRatio = 0x00700102;
inline constexpr std::uint32_t kPresentationPixelMagnificationRatio = 0x00700103;
inline constexpr std::uint32_t kCompoundGraphicSequence = 0x00700209;
inline constexpr std::uint32_t kGraphicGroupSequence = 0x00700234;
inline constexpr std::uint32_t kGraphicLayerRecommendedDisplayCIELabValue = 0x00700401;

// Presentation LUT
inline constexpr std::uint32_t kPresentationLUTSequence = 0x20500010;
inline constexpr std::uint32_t kPresentationLUTShape = 0x20500020;

// Dose
inline constexpr std::uint32_t kDoseGridScaling = 0x3004000E;

// Functional groups
inline constexpr std::uint32_t kSharedFunctionalGroupsSequence = 0x52009229;
inline constexpr std::uint32_t kPerFrameFunctionalGroupsSequence = 0x52009230;

// Waveforms
inline constexpr std::uint32_t kWaveformSequence = 0x54000100;

// Overlays: of the first of the groups (6000), (6002) to (60FE)
inline constexpr std::uint32_t kOverlayRows = 0x60000010;
inline constexpr std::uint32_t kOverlayColumns = 0x60000011;
inline constexpr std::uint32_t kNumberOfFramesInOverlay = 0x60000015;
inline constexpr std::uint32_t kOverlayDescription = 0x60000022;
inline constexpr std::uint32_t kOverlayType = 0x60000040;
inline constexpr std::uint32_t kOverlayOrigin = 0x60000050;
inline constexpr std::uint32_t kImageFrameOrigin = 0x60000051;
inline constexpr std::uint32_t kOverlayBitsAllocated = 0x60000100;
inline constexpr std::uint32_t kOverlayBitPosition = 0x60000102;
inline constexpr std::uint32_t kOverlayActivationLayer = 0x60001001;
inline constexpr std::uint32_t kOverlaysRed = 0x60001201;
inline constexpr std::uint32_t kOverlaysGreen = 0x60001202;
inline constexpr std::uint32_t kOverlaysBlue = 0x60001203;
inline constexpr std::uint32_t kOverlayData = 0x60003000;

// Pixel Data
inline constexpr std::uint32_t kExtendedOffsetTable = 0x7FE00001;
inline constexpr std::uint32_t kExtendedOffsetTableLengths = 0x7FE00002;
inline constexpr std::uint32_t kFloatPixelData = 0x7FE00008;
inline constexpr std::uint32_t kDoubleFloatPixelData = 0x7FE00009;
inline constexpr std::uint32_t kPixelData = 0x7FE00010;

// Padding
inline constexpr std::uint32_t kDataSetTrailingPadding = 0xFFFCFFFC;

// Items
inline constexpr std::uint32_t kItem = 0xFFFEE000;
inline constexpr std::uint32_t kItemDelimitationItem = 0xFFFEE00D;
inline constexpr std::uint32_t kSequenceDelimitationItem = 0xFFFEE0DD;

/// Groups of overlay planes: the even ones from the first to the last.
inline constexpr std::uint32_t kFirstCurveGroup = 0x5000;
inline constexpr std::uint32_t kLastCurveGroup = 0x501E;
inline constexpr std::uint32_t kFirstOverlayGroup = 0x6000;
inline constexpr std::uint32_t kLastOverlayGroup = 0x601E;

/// The attribute of the same element number in another group, as overlay groups repeat theirs:
/// `InGroup(0x6002, kOverlayRows)` is (6002,0010).
[[nodiscard]] constexpr std::uint32_t InGroup(std::uint32_t group, std::uint32_t tag) noexcept {
    return group << 16U | (tag & 0xFFFFU);
}

}  // namespace quorvex::tag

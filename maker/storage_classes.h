/// The storage classes of objects that are no images, which settings may choose.
#pragma once

#include <cstdint>

namespace quorvex {

struct StorageClass {
    const char* modality;
    std::int32_t documentKind;  ///< as image creation counts the reports; 0: not looked at
    std::int32_t objectKind;    ///< as presentation records count
    const char* sopClassUid;
};

inline constexpr StorageClass kStorageClasses[] = {
    {"PR", 0, 1, "1.2.840.10008.5.1.4.1.1.11.1"},   // Grayscale Softcopy Presentation State
    {"SR", 1, 2, "1.2.840.10008.5.1.4.1.1.88.11"},  // Basic Text
    {"SR", 2, 3, "1.2.840.10008.5.1.4.1.1.88.22"},  // Enhanced
    {"SR", 3, 4, "1.2.840.10008.5.1.4.1.1.88.33"},  // Comprehensive
    {"SR", 4, 5, "1.2.840.10008.5.1.4.1.1.88.50"},  // Mammography CAD
    {"SR", 5, 6, "1.2.840.10008.5.1.4.1.1.88.59"},  // Key Object Selection
    {"SR", 6, 7, "1.2.840.10008.5.1.4.1.1.88.65"},  // Chest CAD
};

}  // namespace quorvex

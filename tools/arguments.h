/// Argument texts that several verbs take, as values. Every text that does not fit is a WrongUsage.
#pragma once

#include "quorvex/Types.h"

#include <string>

namespace quorvex::tools {

/// Grey values to show, after the modality stage.
struct Window {
    double centre = 0;
    double width = 0;
};

CSize ParseSize(const std::string& text);     ///< "800x600"
Window ParseWindow(const std::string& text);  ///< "40,400"; fractions count
CPoint ParsePoint(const std::string& text);   ///< "-10,20"
CRect ParseRegion(const std::string& text);   ///< "-10,20,800,600": corner, width and height
int ParseRotation(const std::string& text);   ///< any multiple of 90; answers 0 to 270
double ParseZoom(const std::string& text);    ///< 0.001 to 100

}  // namespace quorvex::tools

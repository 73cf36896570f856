/// Argument texts as values. Every text that does not fit is a WrongUsage.
#pragma once

#include "quorvex/Types.h"
#include "tools/verbs.h"

#include <string>

namespace quorvex::tools {

CSize ParseSize(const std::string& text);     ///< "800x600"
Window ParseWindow(const std::string& text);  ///< "40,400"; fractions are rounded
CPoint ParsePoint(const std::string& text);   ///< "-10,20"
int ParseRotation(const std::string& text);   ///< any multiple of 90; answers 0 to 270
double ParseZoom(const std::string& text);    ///< 0.001 to 100

CRect ParseArea(const std::string& text);           ///< "1,1,512,512"
ShutterWish ParseShutter(const std::string& text);  ///< "circle:256,256,200"
TextWish ParseText(const std::string& text);        ///< "100,80,any text, commas included"
std::vector<Position> ParsePolyline(const std::string& text);  ///< "1,1;20,30.5;40,1"
std::string ParseLabel(const std::string& text);  ///< up to 16 of A-Z, 0-9, space and underscore

}  // namespace quorvex::tools

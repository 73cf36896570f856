/// What a state is to hold, from argument texts. Every text that does not fit is a WrongUsage.
#pragma once

#include "tools/state/state.h"

#include <string>
#include <vector>

namespace quorvex::tools {

CRect ParseArea(const std::string& text);            ///< "1,1,512,512"
ShutterShape ParseShutter(const std::string& text);  ///< "circle:256,256,200"
PlacedText ParseText(const std::string& text);       ///< "100,80,any text, commas included"
std::vector<Position> ParsePolyline(const std::string& text);  ///< "1,1;20,30.5;40,1"
std::string ParseLabel(const std::string& text);  ///< up to 16 of A-Z, 0-9, space and underscore

}  // namespace quorvex::tools

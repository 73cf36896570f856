#include <cstdio>
#include <quorvex/CxDcmParser.h>

int main(int, char** arguments) {
    quorvex::CDcmApp app;
    quorvex::CxDcmParser parser;
    if (parser.Initialize(&app, arguments[1], 0) != quorvex::QVM_SUCCESS) return 1;
    std::printf("C++: %d frames\n", parser.GetFrameCount());
}

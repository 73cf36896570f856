// The quorvex command.
#include "tools/output/unfinished.h"
#include "tools/report.h"
#include "tools/verbs/command_line.h"

#include <exception>
#include <new>

int main(int count, char** texts) {
    using namespace quorvex::tools;
    EndCleanlyWhenStopped();
    try {
        CommandLine line;
        return line.Read(count, texts)();
    } catch (const WrongUsage& failure) {
        Complain("wrong usage", failure.what());
        return kWrongUsage;
    } catch (const EnvironmentFailure& failure) {
        Complain("failed", failure.what());
    } catch (const std::bad_alloc&) {
        Complain("failed", "not enough memory");
    } catch (const std::exception& failure) {
        Complain("failed", failure.what());
    }
    return kEnvironment;
}

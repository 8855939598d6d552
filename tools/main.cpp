// vorn - looks at pictures and converts them, through the installed modules.

#include <vorn/host.h>

#include <cerrno>
#include <cstdio>
#include <new>

#include "tools/commands.h"
#include "tools/picture_files.h"
#include "tools/printable.h"

namespace vorn::tool {

namespace {

std::string usageMessage(const std::string& text) {
    return "vorn: " + printable(text) + "\nvorn --help tells more.\n";
}

int run(int argc, char** argv) {
    CLI::App program("Looks at pictures and converts them, through the installed modules.", "vorn");
    ExitStatus status = kDone;
    program.require_subcommand(1);
    program.set_version_flag("--version",
                             "vorn, library version " + std::to_string(VORN_H_GetVersion()),
                             "Print the library's version and exit");
    program.failure_message(
        [](const CLI::App*, const CLI::Error& error) { return usageMessage(error.what()); });
    addInfoCommand(program, status);
    addConvertCommand(program, status);
    addModulesCommand(program, status);
    addSettingsCommand(program, status);
    addExplainCommand(program, status);
    try {
        program.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return program.exit(error) == 0 ? kDone : kWrongUsage;
    } catch (const WrongUsage& error) {
        std::fputs(usageMessage(error.text).c_str(), stderr);
        return kWrongUsage;
    } catch (const Failure& failure) {
        printFailure(failure);
        return kFailed;
    } catch (const AlreadyShown&) {
        return kFailed;
    }
    return status;
}

// A run whose answer didn't get to where it was wanted has failed.
int statusWithOutput(int status) {
    if (std::fflush(stdout) == 0 && std::ferror(stdout) == 0) {
        return status;
    }
    printFailure(numberedFailure("standard output", kErrorCannotWrite, errno));
    return kFailed;
}

}  // namespace

}  // namespace vorn::tool

int main(int argc, char** argv) {
    vorn::tool::reserveStandardDescriptors();
    try {
        return vorn::tool::statusWithOutput(vorn::tool::run(argc, argv));
    } catch (const std::exception& error) {
        std::fprintf(stderr, "vorn: %s\n", error.what());
        return vorn::tool::kFailed;
    }
}

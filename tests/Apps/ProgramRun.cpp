#include "ProgramRun.h"

#include "support/TemporaryFolder.h"

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace {

constexpr int EXIT_CANNOT_START = 127;

void redirect(int descriptor, const std::string& path, int flags) {
    const int file = ::open(path.c_str(), flags | O_CREAT, 0600);
    if (file < 0 || ::dup2(file, descriptor) < 0) {
        ::_exit(EXIT_CANNOT_START);
    }
}

}  // namespace

ProgramRun runProgram(const std::string& program, const std::vector<std::string>& arguments,
                      const std::map<std::string, std::string>& environment) {
    const TemporaryFolder folder;
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);

    const pid_t child = ::fork();
    if (child < 0) {
        throw std::runtime_error("fork failed");
    }
    if (child == 0) {
        redirect(STDIN_FILENO, "/dev/null", O_RDONLY);
        redirect(STDOUT_FILENO, folder.file("output"), O_WRONLY);
        redirect(STDERR_FILENO, folder.file("errors"), O_WRONLY);
        for (const auto& [name, value] : environment) {
            ::setenv(name.c_str(), value.c_str(), 1);
        }
        ::execv(program.c_str(), argv.data());
        ::_exit(EXIT_CANNOT_START);
    }
    int status = 0;
    if (::waitpid(child, &status, 0) != child) {
        throw std::runtime_error("waitpid failed");
    }
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, folder.read("output"), folder.read("errors")};
}

ProgramRun runScreenManager(const std::vector<std::string>& arguments,
                            const std::map<std::string, std::string>& environment) {
    return runProgram(SM_PROGRAM, arguments, environment);
}

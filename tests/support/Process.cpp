#include "tests/support/Process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace {

/// Made before the fork: the child of a process with threads must not allocate.
std::vector<char*> pointers(const std::vector<std::string>& command)
{
    std::vector<char*> arguments;
    arguments.reserve(command.size() + 1);
    for (const std::string& argument : command)
        arguments.push_back(const_cast<char*>(argument.c_str()));
    arguments.push_back(nullptr);
    return arguments;
}

[[noreturn]] void execute(const std::vector<char*>& arguments)
{
    execv(arguments[0], arguments.data());
    _exit(127);
}

int await(pid_t pid, long* peakKiB = nullptr)
{
    int status = 0;
    rusage usage{};
    if (wait4(pid, &status, 0, &usage) != pid)
        throw std::runtime_error("wait4 failed");
    if (peakKiB != nullptr)
        *peakKiB = usage.ru_maxrss;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::string contentOf(int descriptor)
{
    std::string content;
    char buffer[65536];
    lseek(descriptor, 0, SEEK_SET);
    for (ssize_t count; (count = read(descriptor, buffer, sizeof buffer)) > 0;)
        content.append(buffer, static_cast<std::size_t>(count));
    close(descriptor);
    return content;
}

int temporaryFile()
{
    char path[] = "/tmp/lumo-test-XXXXXX";
    const int descriptor = mkstemp(path);
    unlink(path);
    return descriptor;
}

} // namespace

Outcome run(const std::vector<std::string>& command, const std::vector<std::string>& environment)
{
    const int output = temporaryFile();
    const int errors = temporaryFile();
    const std::vector<char*> arguments = pointers(command);
    const pid_t pid = fork();
    if (pid == 0) {
        dup2(output, STDOUT_FILENO);
        dup2(errors, STDERR_FILENO);
        for (const std::string& variable : environment)
            putenv(const_cast<char*>(variable.c_str()));
        execute(arguments);
    }
    long peakKiB = 0;
    const int exitCode = await(pid, &peakKiB);
    return {exitCode, contentOf(output), contentOf(errors), peakKiB};
}

Process::Process(const std::vector<std::string>& command)
{
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw std::runtime_error("pipe failed");
    const std::vector<char*> arguments = pointers(command);
    m_Pid = fork();
    if (m_Pid == 0) {
        dup2(ends[1], STDOUT_FILENO);
        execute(arguments);
    }
    close(ends[1]);
    m_Output = fdopen(ends[0], "r");
}

Process::~Process()
{
    if (m_Pid > 0) {
        kill(m_Pid, SIGKILL);
        await(m_Pid);
    }
    static_cast<void>(std::fclose(m_Output));
}

std::string Process::readLine()
{
    std::string line;
    for (int byte; (byte = std::fgetc(m_Output)) != EOF && byte != '\n';)
        line += static_cast<char>(byte);
    return line;
}

void Process::signal(int number) const
{
    kill(m_Pid, number);
}

long Process::peakKiB() const
{
    std::ifstream status("/proc/" + std::to_string(m_Pid) + "/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind("VmHWM:", 0) == 0)
            return std::stol(line.substr(6));
    throw std::runtime_error("no peak of memory");
}

int Process::wait()
{
    const int exitCode = await(m_Pid);
    m_Pid = -1;
    return exitCode;
}

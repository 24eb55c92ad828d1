#ifndef LUMO_TESTS_SUPPORT_PROCESS_H
#define LUMO_TESTS_SUPPORT_PROCESS_H

#include <sys/types.h>

#include <cstdio>
#include <string>
#include <vector>

/// What a finished program left.
struct Outcome
{
    int exitCode; ///< 128 + N when signal N ended it
    std::string output;
    std::string errors;
    long peakKiB; ///< the most memory that it, or a program that it ran, had at once
};

/// A program with arguments and additional environment variables ("NAME=value"), run to its end.
Outcome run(const std::vector<std::string>& command, const std::vector<std::string>& environment = {});

/// A program in the background, its standard output readable by line; killed and awaited at the latest
/// by the destructor.
class Process
{
public:
    explicit Process(const std::vector<std::string>& command);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// The next line without its end; empty at the end of the output.
    std::string readLine();
    void signal(int number) const;
    /// The most memory that it had at once so far, as in Outcome.
    long peakKiB() const;
    /// Its exit code, as in Outcome.
    int wait();

private:
    pid_t m_Pid = -1;
    std::FILE* m_Output = nullptr;
};

#endif

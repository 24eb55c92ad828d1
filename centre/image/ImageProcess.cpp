#include "centre/image/ImageProcess.h"

#include "centre/image/Channel.h"
#include "centre/image/NoImage.h"
#include "components/bulkhaul/files/FileFailure.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace centre {

namespace {

using namespace std::chrono_literals;

constexpr int kSocketOfProcess = 3;
constexpr int kMostTasks = 1000;
constexpr std::chrono::seconds kMostBusy{180}; // the process's own limit of CPU time is above it
constexpr std::chrono::seconds kStart{60};
constexpr int kMostWanted = 1000; // files of one image
constexpr std::chrono::milliseconds kLookForCancellation{100};

void require(int error)
{
    if (error != 0)
        throw refusal(std::string("the image process can't be started: ") + std::strerror(error));
}

/// The attributes and actions of a start, freed at its end.
struct Spawn
{
    Spawn()
    {
        ::posix_spawnattr_init(&attributes);
        ::posix_spawn_file_actions_init(&actions);
    }
    ~Spawn()
    {
        ::posix_spawn_file_actions_destroy(&actions);
        ::posix_spawnattr_destroy(&attributes);
    }
    Spawn(const Spawn&) = delete;
    Spawn& operator=(const Spawn&) = delete;

    posix_spawnattr_t attributes;
    posix_spawn_file_actions_t actions;
};

/// Starts the program with nothing of this process: no descriptor but the socket, no environment, no blocked
/// or ignored signal, and in a group of its own, so that Ctrl-C does not reach it.
pid_t start(const std::string& program, std::uint64_t memory, int socket)
{
    Spawn spawn;
    sigset_t none;
    sigset_t all;
    ::sigemptyset(&none);
    ::sigfillset(&all);
    require(::posix_spawnattr_setflags(&spawn.attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF |
                                                              POSIX_SPAWN_SETPGROUP));
    require(::posix_spawnattr_setsigmask(&spawn.attributes, &none));
    require(::posix_spawnattr_setsigdefault(&spawn.attributes, &all));
    require(::posix_spawn_file_actions_addopen(&spawn.actions, 0, "/dev/null", O_RDWR, 0));
    require(::posix_spawn_file_actions_adddup2(&spawn.actions, 0, 1));
    require(::posix_spawn_file_actions_adddup2(&spawn.actions, 0, 2));
    require(::posix_spawn_file_actions_adddup2(&spawn.actions, socket, kSocketOfProcess));
    require(::posix_spawn_file_actions_addclosefrom_np(&spawn.actions, kSocketOfProcess + 1));
    std::string name = program;
    std::string limit = std::to_string(memory);
    std::array<char*, 3> arguments = {name.data(), limit.data(), nullptr};
    std::string locale = "LC_ALL=C.UTF-8";
    std::array<char*, 2> environment = {locale.data(), nullptr};
    pid_t id = -1;
    const int error = ::posix_spawn(&id, program.c_str(), &spawn.actions, &spawn.attributes, arguments.data(),
                                    environment.data());
    if (error != 0)
        throw refusal("the image process " + program + " can't be started: " + std::strerror(error));
    return id;
}

} // namespace

ImageProcess::ImageProcess(const std::string& program, const ImageLimits& limits) : m_Limits(limits)
{
    std::array<int, 2> sockets = {-1, -1};
    if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, sockets.data()) != 0)
        require(errno);
    m_Socket = bulkhaul::FileHandle(sockets[0]);
    bulkhaul::FileHandle other(sockets[1]);
    m_Id = start(program, limits.memory, other.get());
    other = {};
    try {
        const image::FromProcess ready = receive(Clock::now() + kStart, neverCanceled);
        if (ready.kind_case() != image::FromProcess::kReady)
            throw refusal(ready.refusal());
    } catch (const std::exception& exception) {
        causeOfDeath();
        throw refusal("the image process can't be started: " + std::string(exception.what()));
    }
}

ImageProcess::~ImageProcess()
{
    causeOfDeath();
}

bool ImageProcess::isUsable() const
{
    if (m_Failed || m_Tasks >= kMostTasks || m_Busy >= kMostBusy)
        return false;
    pollfd socket = {m_Socket.get(), POLLIN, 0};
    return ::poll(&socket, 1, 0) == 0; // an idle process says nothing: it has died if there is something
}

image::FromProcess ImageProcess::run(const bulkhaul::Folder& folder, const image::Task& task,
                                     const IsCanceled& isCanceled)
{
    const bulkhaul::FileHandle file = openRegularFile(folder, task.file());
    const Clock::time_point start = Clock::now();
    m_Failed = true; // until the process has answered
    image::ToProcess message;
    *message.mutable_task() = task;
    sendMessage(m_Socket.get(), message, {folder.get(), file.get()}); // whether it has died shows below
    image::FromProcess answer = receive(start + m_Limits.time, isCanceled);
    for (int wanted = 0; answer.kind_case() == image::FromProcess::kWanted; ++wanted) {
        if (wanted == kMostWanted)
            throw refusal("it refers to more than " + std::to_string(kMostWanted) + " files");
        answerWanted(folder, answer.wanted());
        answer = receive(start + m_Limits.time, isCanceled);
    }
    m_Failed = false;
    ++m_Tasks;
    m_Busy += Clock::now() - start;
    if (answer.kind_case() == image::FromProcess::kRefusal && answer.no_image())
        throw NoImage(answer.refusal());
    if (answer.kind_case() == image::FromProcess::kRefusal)
        throw refusal(answer.refusal());
    return answer;
}

image::FromProcess ImageProcess::receive(Clock::time_point end, const IsCanceled& isCanceled)
{
    bool late = false;
    const auto wait = [&] {
        for (;;) {
            requireNotCanceled(isCanceled);
            const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
            late = left <= 0ms;
            if (late)
                return false;
            pollfd socket = {m_Socket.get(), POLLIN, 0};
            if (::poll(&socket, 1, static_cast<int>(std::min(left, kLookForCancellation).count())) > 0)
                return true;
        }
    };
    image::FromProcess message;
    std::vector<bulkhaul::FileHandle> none;
    if (receiveMessage(m_Socket.get(), message, none, wait) && none.empty())
        return message;
    if (late)
        throw refusal("the process that read it took too long");
    throw refusal("the process that read it " + causeOfDeath());
}

void ImageProcess::answerWanted(const bulkhaul::Folder& folder, const std::string& path)
{
    image::ToProcess message;
    bulkhaul::FileHandle file;
    try {
        std::vector<std::string> names = bulkhaul::splitBelow(path);
        const std::string name = names.empty() ? "" : names.back();
        if (!names.empty())
            names.pop_back();
        file = openRegularFile(folder.below(names), name);
    } catch (const std::exception&) { // not a file of the image's folder
        message.set_open_error(ENOENT);
        sendMessage(m_Socket.get(), message);
        return;
    }
    message.set_open_error(0);
    sendMessage(m_Socket.get(), message, {file.get()});
}

/// Ends the process, if it has not ended, and returns how it did.
std::string ImageProcess::causeOfDeath()
{
    if (m_Id < 0)
        return "has ended";
    int status = 0;
    ::kill(m_Id, SIGKILL); // changes nothing if it is ending for another cause
    while (::waitpid(m_Id, &status, 0) < 0 && errno == EINTR) {
    }
    m_Id = -1;
    if (WIFSIGNALED(status))
        return "died of signal " + std::to_string(WTERMSIG(status));
    return "ended with code " + std::to_string(WEXITSTATUS(status));
}

bulkhaul::FileHandle openRegularFile(const bulkhaul::Folder& folder, const std::string& name)
{
    // A pipe must not be waited for.
    constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
    bulkhaul::FileHandle handle(::openat(folder.get(), name.c_str(), kFlags));
    struct stat status = {};
    if (!handle || ::fstat(handle.get(), &status) != 0)
        bulkhaul::throwErrno(haulbox::UNREADABLE, name);
    if (!S_ISREG(status.st_mode))
        throw refusal(name + " is not a regular file");
    return handle;
}

} // namespace centre

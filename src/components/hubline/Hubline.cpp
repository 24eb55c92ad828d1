#include "lumo/components/hubline/Hubline.h"

#include "components/wirecall/Address.h"
#include "components/wirecall/Token.h"
#include "hubline.pb.h"
#include "lumo/components/wirecall/RpcChannel.h"
#include "lumo/components/wirecall/RpcController.h"

#include <map>
#include <mutex>

namespace hubline {

namespace {

typedef boost::shared_ptr<wirecall::RpcChannel> Channel;

struct OpenChannel
{
    std::string token;
    Channel channel;
    int users;
};

/// The state of the client; never destroyed, since threads may use it while the process ends.
struct Client
{
    std::mutex mutex;
    bool started = false;
    unsigned long starts = 0; ///< how often the client was started or stopped
    Options options;
    Channel current;
    std::multimap<std::string, OpenChannel> channels; ///< by address
};

Client& client()
{
    static Client* const theClient = new Client;
    return *theClient;
}

/// Whether `options` let a token of this kind go to `address`, and whether over TLS.
Code judgeSecurity(const Options& options, const std::string& address, const std::string& token, bool& tls,
                   std::string& reason)
{
    const bool loopback = isLoopback(address);
    tls = options.security == Security::Tls || (options.security == Security::Automatic && !loopback);
    if (tls || loopback || token.empty())
        return kOpened;
    reason = "a token may not travel to " + address + " in plain text: use TLS, or no token";
    return kInsecure;
}

/// Returns the failure of a hello in plain words. gRPC's text has the cause after its last colon.
std::string explain(const wirecall::RpcController& controller)
{
    std::string text = controller.ErrorText();
    switch (controller.failure()) {
    case wirecall::Failure::NoConnection: {
        const std::size_t colon = text.rfind(": ");
        return "no connection: " + (colon == std::string::npos ? text : text.substr(colon + 2));
    }
    case wirecall::Failure::TimeLimit:
        return "no answer within the time limit";
    case wirecall::Failure::Unauthenticated:
        return text;
    default:
        return "something answers, but not a centre or a storage box: " + text;
    }
}

Code sayHello(wirecall::RpcChannel& channel, const std::string& address, long long timeout,
              std::string& reason)
{
    HubServices_Stub stub(&channel);
    wirecall::RpcController controller;
    controller.SetTimeout(timeout);
    HelloReq request;
    request.set_client("LumoDataMgr");
    HelloRsp response;
    stub.hello(&controller, &request, &response, nullptr);
    if (!controller.Failed())
        return kOpened;
    reason = address + ": " + explain(controller);
    return controller.failure() == wirecall::Failure::Unauthenticated ? kTokenRefused : kNoConnection;
}

Code open(const Options& options, const std::string& address, const std::string& token, Channel& channel,
          std::string& reason)
{
    if (!wirecall::isSendableToken(token, reason))
        return kTokenRefused;
    wirecall::ChannelOptions wire;
    const Code secure = judgeSecurity(options, address, token, wire.tls, reason);
    if (secure != kOpened)
        return secure;
    wire.address = address;
    wire.token = token;
    wire.rootCertificate = options.rootCertificate;
    const Channel opened = wirecall::openChannel(wire, reason);
    if (!opened)
        return kNoConnection;
    const Code code = sayHello(*opened, address, options.timeout, reason);
    if (code == kOpened)
        channel = opened;
    return code;
}

/// The open channel to `address` with that token, counted once more; empty if there is none.
Channel share(Client& hub, const std::string& address, const std::string& token)
{
    const auto range = hub.channels.equal_range(address);
    for (auto entry = range.first; entry != range.second; ++entry) {
        if (entry->second.token == token) {
            ++entry->second.users;
            return entry->second.channel;
        }
    }
    return {};
}

} // namespace

Code StartHubline(const Options& options, std::string& reason)
{
    Channel channel;
    const Code code = open(options, options.address, options.token, channel, reason);
    if (code != kOpened)
        return code;
    // The former channels end after the lock is released: ending one may wait for its threads.
    std::multimap<std::string, OpenChannel> channels;
    Client& hub = client();
    const std::lock_guard<std::mutex> lock(hub.mutex);
    ++hub.starts;
    hub.started = true;
    hub.options = options;
    hub.current.swap(channel);
    hub.channels.swap(channels);
    return kOpened;
}

void StopHubline()
{
    Client& hub = client();
    std::multimap<std::string, OpenChannel> channels;
    Channel current;
    const std::lock_guard<std::mutex> lock(hub.mutex);
    ++hub.starts;
    hub.started = false;
    hub.options = Options();
    current.swap(hub.current);
    channels.swap(hub.channels);
}

Channel NewChannel(const std::string& address, const std::string& token, int& code)
{
    Client& hub = client();
    Options options;
    unsigned long starts = 0;
    {
        const std::lock_guard<std::mutex> lock(hub.mutex);
        if (!hub.started) {
            code = kNotStarted;
            return {};
        }
        if (address == hub.options.address) {
            code = kCurrentConnection;
            return {};
        }
        options = hub.options;
        starts = hub.starts;
    }
    // The hello goes out without the lock, also for a shared channel: only the hello finds out whether the
    // other side is still there and still accepts the token.
    Channel channel;
    std::string reason;
    code = open(options, address, token, channel, reason);
    if (code != kOpened) {
        // NewChannel has no code for it: its caller sees that there is no connection.
        if (code == kInsecure)
            code = kNoConnection;
        Logger::Instance(true)->log(2, reason);
        return {};
    }
    const std::lock_guard<std::mutex> lock(hub.mutex);
    if (starts != hub.starts) {
        // Restarted or stopped during the hello: the channel belongs to the former client.
        code = kNotStarted;
        return {};
    }
    if (Channel shared = share(hub, address, token))
        return shared;
    hub.channels.emplace(address, OpenChannel{token, channel, 1});
    return channel;
}

Channel GetCurrentChannelExt()
{
    Client& hub = client();
    const std::lock_guard<std::mutex> lock(hub.mutex);
    return hub.current;
}

void ReleaseChannel(const std::string& address)
{
    Client& hub = client();
    Channel last;
    const std::lock_guard<std::mutex> lock(hub.mutex);
    const auto entry = hub.channels.find(address);
    if (entry == hub.channels.end() || --entry->second.users > 0)
        return;
    last.swap(entry->second.channel);
    hub.channels.erase(entry);
}

bool isLoopback(const std::string& address)
{
    wirecall::Address parsed;
    return wirecall::parseAddress(address, parsed) && wirecall::isLoopbackHost(parsed.host);
}

} // namespace hubline

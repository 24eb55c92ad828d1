#ifndef LUMO_TESTS_CENTRE_CENTRESUPPORT_H
#define LUMO_TESTS_CENTRE_CENTRESUPPORT_H

#include "centre/Centre.h"
#include "centre/Error.h"
#include "centre/Store.h"
#include "components/wirecall/RpcChannel.h"
#include "components/wirecall/RpcController.h"
#include "forgeserver.pb.h"
#include "haulbox.pb.h"
#include "ledgerserver.pb.h"
#include "tavrel.pb.h"

#include <QProcess>
#include <QStringList>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <google/protobuf/text_format.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

/// A temporary folder with a data folder in it, of company LUMO and user demo.
class DataFolder
{
public:
    DataFolder() : m_Token(centre::Store::create(path(), "LUMO", "demo")) {}

    std::string path() const { return below("data"); }
    std::string below(const std::string& name) const { return m_Folder.filePath("").toStdString() + name; }
    const std::string& token() const { return m_Token; }

    /// Makes an empty file, and the folders above it.
    void makeFile(const std::string& name) const
    {
        const std::filesystem::path path = below(name);
        std::filesystem::create_directories(path.parent_path());
        std::ofstream(path).flush();
    }

private:
    QTemporaryDir m_Folder;
    std::string m_Token;
};

inline boost::shared_ptr<wirecall::RpcChannel> channelTo(const std::string& address, const std::string& token,
                                                         const std::string& rootCertificate = {})
{
    wirecall::ChannelOptions options;
    options.address = address;
    options.token = token;
    options.tls = !rootCertificate.empty();
    options.rootCertificate = rootCertificate;
    std::string error;
    auto channel = wirecall::openChannel(options, error);
    EXPECT_TRUE(channel) << error;
    return channel;
}

/// The operation of that name, of whatever service of a centre or a box has one.
inline const google::protobuf::MethodDescriptor& findOperation(const std::string& name)
{
    for (const google::protobuf::ServiceDescriptor* service :
         {ledgerserver::LedgerServices::descriptor(), Tavrel::TavrelServer::descriptor(),
          forgeserver::ForgeServices::descriptor(), haulbox::BoxServices::descriptor()})
        if (const auto* method = service->FindMethodByName(name))
            return *method;
    throw std::logic_error("no operation " + name);
}

/// Calls an operation with a request in protobuf's text format; the answer in the same, on one line, or
/// "failed: " with the reason.
inline std::string ask(wirecall::RpcChannel& channel, const std::string& operation,
                       const std::string& requestText, wirecall::RpcController& controller)
{
    const auto& method = findOperation(operation);
    auto& factory = *google::protobuf::MessageFactory::generated_factory();
    const std::unique_ptr<google::protobuf::Message> request(
        factory.GetPrototype(method.input_type())->New());
    const std::unique_ptr<google::protobuf::Message> response(
        factory.GetPrototype(method.output_type())->New());
    EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(requestText, request.get())) << requestText;
    channel.CallMethod(&method, &controller, request.get(), response.get(), nullptr);
    if (controller.Failed())
        return "failed: " + controller.ErrorText();
    std::string text;
    google::protobuf::TextFormat::Printer printer;
    printer.SetSingleLineMode(true);
    printer.SetUseUtf8StringEscaping(true);
    printer.PrintToString(*response, &text);
    return text.empty() ? text : text.substr(0, text.size() - 1);
}

inline std::string ask(wirecall::RpcChannel& channel, const std::string& operation,
                       const std::string& requestText)
{
    wirecall::RpcController controller;
    controller.SetTimeout(20000);
    return ask(channel, operation, requestText, controller);
}

/// A run of the real program; killed when the test is done with it.
class CentreProcess
{
public:
    explicit CentreProcess(const QStringList& arguments) { m_Process.start(LUMO_CENTRE_PROGRAM, arguments); }

    ~CentreProcess()
    {
        m_Process.kill();
        m_Process.waitForFinished();
    }

    /// Waits for the serving line; the address in it. Empty when the program ended instead.
    std::string servingAddress()
    {
        while (!m_Process.canReadLine())
            if (!m_Process.waitForReadyRead(kPatience))
                return {};
        const std::string line = m_Process.readLine().trimmed().toStdString();
        return line.substr(line.rfind(' ') + 1);
    }

    bool waitForErrorOutput()
    {
        m_Process.setReadChannel(QProcess::StandardError);
        return m_Process.waitForReadyRead(kPatience);
    }

    int exitCode()
    {
        EXPECT_TRUE(m_Process.waitForFinished(kPatience) || m_Process.state() == QProcess::NotRunning);
        return m_Process.exitStatus() == QProcess::NormalExit ? m_Process.exitCode() : -1;
    }

    void terminate() { m_Process.terminate(); }
    void killNow()
    {
        m_Process.kill();
        m_Process.waitForFinished(kPatience);
    }

    std::string output() { return m_Process.readAllStandardOutput().toStdString(); }
    std::string errorOutput() { return m_Process.readAllStandardError().toStdString(); }

private:
    static constexpr int kPatience = 60000;
    QProcess m_Process;
};

#endif

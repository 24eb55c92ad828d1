#ifndef LUMO_TESTS_CENTRE_CENTRESUPPORT_H
#define LUMO_TESTS_CENTRE_CENTRESUPPORT_H

#include "centre/base/Error.h"
#include "centre/content/Import.h"
#include "centre/content/LoadRecords.h"
#include "centre/database/PostgresDatabase.h"
#include "centre/server/Centre.h"
#include "centre/store/Store.h"
#include "forgeserver.pb.h"
#include "haulbox.pb.h"
#include "ledgerserver.pb.h"
#include "lumo/components/wirecall/RpcController.h"
#include "tavrel.pb.h"
#include "tests/support/Channel.h"
#include "tests/support/Files.h"

#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <google/protobuf/text_format.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

/// The address of a PostgreSQL server that the tests run on; null: they run on SQLite.
inline const char* postgresql()
{
    return std::getenv("LUMO_POSTGRESQL");
}

#define ONLY_WITH_A_DATA_FOLDER()                                                                            \
    if (postgresql() != nullptr)                                                                             \
    GTEST_SKIP() << "of data folders"

/// A temporary folder with a data folder in it, or an empty catalogue on a server.
class EmptyFolder
{
public:
    EmptyFolder()
    {
        if (postgresql() == nullptr)
            return;
        static int databases = 0;
        m_Database = "test_" + std::to_string(::getpid()) + "_" + std::to_string(++databases);
        centre::PostgresDatabase(postgresql()).execute("CREATE DATABASE " + m_Database);
    }
    ~EmptyFolder()
    {
        std::filesystem::remove_all(below("")); // Qt can't remove names that are not UTF-8
        if (!m_Database.empty())
            centre::PostgresDatabase(postgresql()).execute("DROP DATABASE " + m_Database + " WITH (FORCE)");
    }
    EmptyFolder(const EmptyFolder&) = delete;
    EmptyFolder& operator=(const EmptyFolder&) = delete;

    std::string below(const std::string& name) const { return m_Folder.path().toStdString() + "/" + name; }
    /// The data folder, or the server's address.
    std::string path() const
    {
        return m_Database.empty()
                   ? below("data")
                   : std::regex_replace(postgresql(), std::regex("/postgres\\?"), "/" + m_Database + "?");
    }

private:
    QTemporaryDir m_Folder;
    std::string m_Database;
};

/// The same, with company LUMO and user demo.
class DataFolder : public EmptyFolder
{
public:
    DataFolder() : m_Token(centre::Store::create(path(), "LUMO", "demo")) {}
    const std::string& token() const { return m_Token; }

    /// Makes a file, and the folders above it.
    void makeFile(const std::string& name, const std::string& bytes = {}) const
    {
        writeFile(below(name), bytes);
    }

private:
    std::string m_Token;
};

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

/// The identifiers that the beans of an answer begin with, and blanks between them.
inline std::string idsIn(const std::string& answer)
{
    std::string ids;
    const std::regex id("\\{ \\w+: (\\d+)");
    for (std::sregex_iterator bean(answer.begin(), answer.end(), id), end; bean != end; ++bean)
        ids += (ids.empty() ? "" : " ") + bean->str(1);
    return ids;
}

/// A test of a data folder and of the centre that serves it.
class CentreTest : public testing::Test
{
protected:
    void serve(const centre::ServeOptions& options = {})
    {
        m_Centre = std::make_unique<centre::Centre>(m_Data.path(), options);
        callWith(m_Data.token());
    }

    void callWith(const std::string& token) { m_Channel = channelTo(m_Centre->address(), token); }
    /// As a user of LUMO who may not write.
    void callAsReader() { callWith(m_Store.addUser("reader", "LUMO", false)); }

    /// Waits until what connections remember of a server's database is forgotten; a data folder's is at once.
    void awaitChanges()
    {
        const auto before = m_Store.database().state();
        while (postgresql() != nullptr && m_Store.database().state() == before)
            std::this_thread::yield();
    }

    /// `m_Errors` gets what the centre writes to standard error.
    std::string ask(const std::string& operation, const std::string& request)
    {
        testing::internal::CaptureStderr();
        std::string answer = ::ask(*m_Channel, operation, request);
        m_Errors = testing::internal::GetCapturedStderr();
        return answer;
    }

    void load(const std::string& records)
    {
        std::istringstream lines(records);
        m_Loaded = centre::countsText(centre::loadRecords(m_Store, lines, "file", [](std::uint64_t) {}));
    }

    centre::ImportReport import(const std::string& folder, const std::string& disk,
                                const std::string& company = "LUMO", const std::string& box = {})
    {
        m_Problems.clear();
        return centre::importTree(m_Store,
                                  {m_Data.below(folder), disk, company, box, false,
                                   [this](const std::string& problem) { m_Problems.push_back(problem); }});
    }

    std::string value(const std::string& sql) { return m_Store.database().value(sql); }

    DataFolder m_Data;
    centre::Store m_Store{m_Data.path()};
    std::unique_ptr<centre::Centre> m_Centre;
    boost::shared_ptr<wirecall::RpcChannel> m_Channel;
    std::string m_Errors;
    std::string m_Loaded;
    std::vector<std::string> m_Problems;
};

/// Every place of the catalogue, from the disk's name on, with its identifier; folders end with "/".
inline std::map<std::string, unsigned> catalogueOf(centre::Store& store)
{
    std::map<std::string, unsigned> places;
    const auto rows = store.database().prepare(
        "WITH RECURSIVE tree(id, path) AS (SELECT id, name || '/' FROM folder WHERE parent_id = 0"
        " UNION ALL SELECT folder.id, path || name || '/' FROM tree JOIN folder ON parent_id = tree.id)"
        " SELECT path, id FROM tree UNION ALL"
        " SELECT path || name, file.id FROM tree JOIN file ON parent_id = tree.id");
    while (rows->step())
        places[rows->string(0)] = rows->id(1);
    return places;
}

template <class Function>
void expectError(centre::ExitCode code, const std::string& reason, Function function)
{
    try {
        function();
        ADD_FAILURE() << "no error: " << reason;
    } catch (const centre::Error& error) {
        EXPECT_EQ(error.code(), code);
        EXPECT_THAT(error.what(), testing::HasSubstr(reason));
    }
}

#endif

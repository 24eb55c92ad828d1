#ifndef LUMO_TESTS_TRANSFER_TRANSFERFIXTURE_H
#define LUMO_TESTS_TRANSFER_TRANSFERFIXTURE_H

#include "lumo/core/TextEncoding.h"
#include "tests/support/FakeComponents.h"
#include "tests/support/Files.h"
#include "tests/support/LogCapture.h"
#include "tests/support/TestManager.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <boost/make_shared.hpp>
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <regex>

/// The planning service's answer for a storage box.
constexpr char kBox[] = "info { address: 'box:1' }";

/// The singleton over fakes, in a temporary working folder. end() waits for the tasks by deleting it.
class TransferFixture : public ::testing::Test
{
protected:
    typedef std::vector<std::string> Lines;

    TransferFixture()
    {
        forgetComponents();
        components().opened = boost::make_shared<FakeChannel>();
        EXPECT_TRUE(QDir(m_Folder.path()).mkdir("here"));
        EXPECT_TRUE(QDir::setCurrent(path("here")));
    }

    ~TransferFixture() override
    {
        end();
        QDir::setCurrent("/");
    }

    /// The manager, made on first use.
    TestManager& manager()
    {
        if (!m_Manager) {
            m_Manager = std::make_unique<TestManager>(m_Channel);
            TestManager::m_Instance = m_Manager.get();
            components().calls.clear();
            m_Log.clear();
        }
        return *m_Manager;
    }

    void end()
    {
        m_Manager.reset();
        TestManager::m_Instance = nullptr;
        Lines& calls = components().calls;
        calls.erase(std::remove(calls.begin(), calls.end(), "end"), calls.end());
        EXPECT_TRUE(m_Channel.allPlayed());
    }

    /// Makes all new but the folder.
    void again()
    {
        end();
        const auto channel = components().opened;
        forgetComponents();
        components().opened = channel;
        m_Events.clear();
        m_TaskIDs.clear();
    }

    void answer(const Lines& answers)
    {
        manager();
        for (const std::string& text : answers)
            m_Channel.answer(text);
    }

    /// Writes each call as "direction code percent".
    TransferCallback callback()
    {
        return [this](const char* taskID, int direction, int code, int percent) {
            m_Events.push_back(std::to_string(direction) + " " + std::to_string(code) + " " +
                               std::to_string(percent));
            m_TaskIDs.push_back(taskID);
        };
    }

    QString path(const QString& name) const { return QDir(m_Folder.path()).filePath(name); }
    std::string text(const QString& name) const { return path(name).toStdString(); }

    void write(const QString& name, const QByteArray& content) const
    {
        writeFile(text(name), content.toStdString());
    }

    /// What the file holds, "none" without one.
    QByteArray read(const QString& name) const
    {
        return std::filesystem::exists(text(name)) ? readFile(text(name)).c_str() : "none";
    }

    /// The tasks' log lines, each "message Func:function", with the temporary folder as DIR.
    Lines taskLines(const std::string& file) const
    {
        const std::regex form("TIME\n \\[INFO\\] ([^]*) File:" + file + ", (Func:[^]*), Line:N\r\n");
        Lines found;
        for (const std::string& line : m_Log.lines())
            if (std::smatch match; std::regex_match(line, match, form))
                found.push_back(masked(match.str(1) + " " + match.str(2)));
        return found;
    }

    /// With DIR for the temporary folder and ID for the braced text of an identifier.
    std::string masked(std::string line) const
    {
        for (std::size_t at; (at = line.find(m_Folder.path().toStdString())) != std::string::npos;)
            line.replace(at, static_cast<std::size_t>(m_Folder.path().size()), "DIR");
        static const std::regex braced("\\{[0-9a-f]{8}-[0-9a-f-]{27}\\}");
        return std::regex_replace(line, braced, "ID");
    }

    Lines maskedCalls() const
    {
        Lines calls;
        for (const std::string& call : components().calls)
            calls.push_back(masked(call));
        return calls;
    }

    QTemporaryDir m_Folder;
    LogCapture m_Log;
    FakeChannel m_Channel;
    std::unique_ptr<TestManager> m_Manager;
    Lines m_Events;
    Lines m_TaskIDs;
};

/// A literal of the log, which is in GBK.
inline std::string gbk(const std::string& utf8)
{
    return convertToMultibyte(utf8);
}

#endif

#ifndef LUMO_TESTS_CLIENT_CLIENTCENTRE_H
#define LUMO_TESTS_CLIENT_CLIENTCENTRE_H

#include "centre/content/Import.h"
#include "centre/server/Centre.h"
#include "centre/store/Store.h"
#include "lumo/client/Session.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>
#include <string>
#include <vector>

/// A centre with one disk, "earth", in a storage box, and what it takes to log in there.
class ClientCentre : public ::testing::Test
{
protected:
    /// `files`: their paths on the disk; each has its own path as content.
    void serve(const std::vector<std::string>& files, const std::vector<std::string>& faults = {})
    {
        std::filesystem::create_directories(below("earth"));
        for (const std::string& file : files) {
            const std::filesystem::path path = below("earth/" + file);
            std::filesystem::create_directories(path.parent_path());
            std::ofstream(path) << file;
        }
        {
            centre::Store store(below("data"));
            store.addBox("B1", "127.0.0.1:1");
            centre::ImportOptions options;
            options.folder = below("earth");
            options.diskName = "earth";
            options.companyNo = "LUMO";
            options.boxCode = "B1";
            centre::importTree(store, options, [](const std::string& problem) { ADD_FAILURE() << problem; });
        }
        centre::ServeOptions options;
        options.faults = faults;
        options.boxes = {{"B1", "127.0.0.1:0"}};
        std::filesystem::create_directory(below("copies"));
        options.copyRoots = {below("copies")};
        m_Centre = std::make_unique<centre::Centre>(below("data"), options);
    }

    lumo::Session::Settings settings() const
    {
        lumo::Session::Settings settings;
        settings.centre = m_Centre->address();
        settings.token = m_Token;
        settings.user = "demo";
        settings.company = "LUMO";
        return settings;
    }

    std::string below(const std::string& name) const { return m_Folder.path().toStdString() + "/" + name; }

    QTemporaryDir m_Folder;
    const std::string m_Token = centre::Store::create(below("data"), "LUMO", "demo");
    std::unique_ptr<centre::Centre> m_Centre;
};

/// The kind of the Error that `action` throws; none when it throws none.
template <class Action>
std::optional<lumo::Error::Kind> errorOf(Action action)
{
    try {
        action();
    } catch (const lumo::Error& error) {
        EXPECT_STRNE(error.what(), "");
        return error.kind();
    }
    return std::nullopt;
}

#endif

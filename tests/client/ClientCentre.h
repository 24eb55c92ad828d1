#ifndef LUMO_TESTS_CLIENT_CLIENTCENTRE_H
#define LUMO_TESTS_CLIENT_CLIENTCENTRE_H

#include "lumo/client/Session.h"
#include "tests/centre/CentreSupport.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// A centre with one disk, "earth", in a storage box, and what it takes to log in there.
class ClientCentre : public CentreTest
{
protected:
    /// `files`: their paths on the disk; each has its own path as content.
    void serve(const std::vector<std::string>& files, const std::vector<std::string>& faults = {})
    {
        std::filesystem::create_directories(below("earth"));
        std::filesystem::create_directories(below("copies"));
        for (const std::string& file : files)
            m_Data.makeFile("earth/" + file, file);
        m_Store.addBox("B1", "127.0.0.1:1");
        import("earth", "earth", "LUMO", "B1");
        centre::ServeOptions options;
        options.faults = faults;
        options.boxes = {{"B1", "127.0.0.1:0"}};
        options.copyRoots = {below("copies")};
        CentreTest::serve(options);
    }

    lumo::Session::Settings settings() const
    {
        lumo::Session::Settings settings;
        settings.centre = m_Centre->address();
        settings.token = m_Data.token();
        settings.user = "demo";
        settings.company = "LUMO";
        return settings;
    }

    std::string below(const std::string& name) const { return m_Data.below(name); }
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

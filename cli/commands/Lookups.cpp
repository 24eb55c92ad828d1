#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/Records.h"

namespace cli {

namespace {

class WhoamiCommand : public Command
{
public:
    explicit WhoamiCommand(CLI::App& /*app*/) {}

    void run(lumo::Session& session, bool json) override
    {
        const lumo::Centre centre = session.centre();
        printFields({{{"user", "User"}, centre.user()},
                     {{"companyNo", "Company"}, centre.companyNumber()},
                     {{"companyID", "Identifier"}, centre.company().number()}},
                    json);
    }
};

class BoxesCommand : public Command
{
public:
    explicit BoxesCommand(CLI::App& /*app*/) {}

    void run(lumo::Session& session, bool json) override
    {
        std::vector<std::vector<Json>> rows;
        for (const auto& [code, address] : session.centre().boxes())
            rows.push_back({code, address});
        printList({{"code", "BOX"}, {"address", "ADDRESS"}}, rows, "(the company has no storage boxes)",
                  json);
    }
};

class AreasCommand : public Command
{
public:
    explicit AreasCommand(CLI::App& app)
    {
        addArgument(app, "ID", m_Area, "The area's identifier")->check(wholeNumber);
    }

    void run(lumo::Session& session, bool json) override
    {
        std::vector<std::vector<Json>> rows;
        for (const auto& [id, name] : session.centre().areas(lumo::AreaId(m_Area)))
            rows.push_back({id.number(), name});
        printList({{"areaID", "AREA"}, {"areaName", "NAME"}}, rows, "(no areas)", json);
    }

private:
    unsigned int m_Area = 0;
};

} // namespace

void addLookups(CommandSet& commands)
{
    commands.add<WhoamiCommand>("whoami", "Show your user name and your company, as the centre knows them");
    commands.add<BoxesCommand>("boxes", "List the storage boxes of your company");
    commands.add<AreasCommand>("areas", "List the national areas that the centre gives for an area");
}

} // namespace cli

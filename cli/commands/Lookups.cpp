#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
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
        const std::string user = centre.user();
        const std::string company = centre.companyNumber();
        const unsigned int id = centre.company().number();
        Table table({"", ""});
        table.add({"User", shownText(user)});
        table.add({"Company", shownText(company)});
        table.add({"Identifier", std::to_string(id)});
        print(json ? jsonText({{"user", user}, {"companyNo", company}, {"companyID", id}}) : table.text());
    }
};

class BoxesCommand : public Command
{
public:
    explicit BoxesCommand(CLI::App& /*app*/) {}

    void run(lumo::Session& session, bool json) override
    {
        Json list = Json::array();
        Table table({"BOX", "ADDRESS"});
        for (const auto& [code, address] : session.centre().boxes()) {
            list.push_back({{"code", code}, {"address", address}});
            table.add({code, shownText(address)});
        }
        print(json           ? jsonText(list)
              : list.empty() ? "(the company has no storage boxes)\n"
                             : table.text(listWidth()));
    }
};

class AreasCommand : public Command
{
public:
    explicit AreasCommand(CLI::App& app)
    {
        app.add_option("ID", m_Area, "The area's identifier")
            ->option_text(" ")
            ->check(wholeNumber)
            ->required();
    }

    void run(lumo::Session& session, bool json) override
    {
        Json list = Json::array();
        Table table({"AREA", "NAME"});
        for (const auto& [id, name] : session.centre().areas(lumo::AreaId(m_Area))) {
            list.push_back({{"areaID", id.number()}, {"areaName", name}});
            table.add({std::to_string(id.number()), shownText(name)});
        }
        print(json ? jsonText(list) : list.empty() ? "(no areas)\n" : table.text(listWidth()));
    }

private:
    unsigned int m_Area = 0;
};

} // namespace

void addLookups(CommandSet& commands)
{
    commands.add<WhoamiCommand>("whoami", "Show who you are to the centre, and your company");
    commands.add<BoxesCommand>("boxes", "List the storage boxes of your company");
    commands.add<AreasCommand>("areas", "List the national areas that the centre gives for an area");
}

} // namespace cli

#include "cli/Connection.h"
#include "cli/ExitCode.h"
#include "cli/commands/Command.h"
#include "cli/commands/SharedOptions.h"
#include "cli/output/DisplayText.h"
#include "cli/output/Records.h"

#include "lumo/core/LumoDataMgr.h"

namespace cli {

namespace {

class WhoamiCommand : public Command
{
public:
    explicit WhoamiCommand(CLI::App& /*app*/) {}

    void run(Session& session) override
    {
        const unsigned int companyID = session.manager.companyID();
        session.journal.forget();
        const std::string companyNo = session.manager.getCompanyNo(companyID).toStdString();
        if (companyNo.empty() && session.journal.lastReason().kind != Reason::Kind::None)
            requestFailed(session.journal);
        const std::string user = session.manager.roleName().toStdString();
        Table table({"", ""});
        table.add({"User", shownText(user)});
        table.add({"Company", shownText(companyNo)});
        table.add({"Identifier", std::to_string(companyID)});
        print(session.json ? jsonText({{"user", user}, {"companyNo", companyNo}, {"companyID", companyID}})
                           : table.text());
    }
};

class BoxesCommand : public Command
{
public:
    explicit BoxesCommand(CLI::App& /*app*/) {}

    void run(Session& session) override
    {
        QMap<QString, QString> boxes;
        if (!session.manager.getKestaList(boxes))
            requestFailed(session.journal);
        Json list = Json::array();
        Table table({"BOX", "ADDRESS"});
        for (auto box = boxes.cbegin(); box != boxes.cend(); ++box) {
            const std::string code = box.key().toStdString();
            const std::string address = box.value().toStdString();
            list.push_back({{"code", code}, {"address", address}});
            table.add({code, shownText(address)});
        }
        print(session.json      ? jsonText(list)
              : boxes.isEmpty() ? "(the company has no storage boxes)\n"
                                : table.text(listWidth()));
    }
};

class AreasCommand : public Command
{
public:
    explicit AreasCommand(CLI::App& app)
    {
        app.add_option("ID", m_AreaID, "The area's identifier")
            ->option_text(" ")
            ->check(wholeNumber)
            ->required();
    }

    void run(Session& session) override
    {
        QMap<unsigned int, QString> areas;
        const ENUM_RET_TYPE result = session.manager.getNationalArea(m_AreaID, areas);
        if (result == RET_FAILED)
            requestFailed(session.journal);
        if (result == RET_NULL)
            throw Failure(ExitCode::PlaceNotFound, "the centre has no area " + std::to_string(m_AreaID));
        Json list = Json::array();
        Table table({"AREA", "NAME"});
        for (auto area = areas.cbegin(); area != areas.cend(); ++area) {
            const std::string name = area.value().toStdString();
            list.push_back({{"areaID", area.key()}, {"areaName", name}});
            table.add({std::to_string(area.key()), shownText(name)});
        }
        print(session.json ? jsonText(list) : areas.isEmpty() ? "(no areas)\n" : table.text(listWidth()));
    }

private:
    unsigned int m_AreaID = 0;
};

} // namespace

void addLookups(CommandSet& commands)
{
    commands.add<WhoamiCommand>("whoami", "Show who you are to the centre, and your company");
    commands.add<BoxesCommand>("boxes", "List the storage boxes of your company");
    commands.add<AreasCommand>("areas", "List the national areas that the centre gives for an area");
}

} // namespace cli

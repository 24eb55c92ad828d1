// Who may read and change what, over all operations of the services.

#include "centre/ledger/Changes.h"
#include "centre/ledger/LedgerOperations.h"
#include "centre/store/Accounts.h"
#include "centre/store/Connection.h"
#include "centre/store/RecordKinds.h"
#include "tests/centre/CentreSupport.h"

#include <google/protobuf/reflection.h>

#include <ctime>
#include <set>

namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::MethodDescriptor;

/// The records of a company have identifiers from the first on, and its name as their texts.
struct Company
{
    const char* name;
    int first;
};

constexpr Company kOwner = {"OWNER", 11};
constexpr Company kOther = {"OTHER", 31};
constexpr Company kNobody = {"NOBODY", 991}; ///< has no records
constexpr int kIdentifiers = 10;             ///< of a company

/// Operations that answer everyone alike.
const std::set<std::string> kForEveryone = {
    "queryNationalAreaByAreaID", "queryVersionByVersionNoAndProgramNo", "queryVersionByVersionNoAndModuleNo",
    "checkNewVersion", "checkNewVersionByModuleNo"};

std::vector<const MethodDescriptor*> methodsOf(const google::protobuf::ServiceDescriptor& service)
{
    std::vector<const MethodDescriptor*> methods;
    for (int i = 0; i < service.method_count(); ++i)
        methods.push_back(service.method(i));
    return methods;
}

/// Fills a request with the company's texts, and `id` as every identifier but the company's own.
void fill(Message& message, const Company& company, int id, bool withType)
{
    const google::protobuf::Reflection& reflection = *message.GetReflection();
    for (int i = 0; i < message.GetDescriptor()->field_count(); ++i) {
        const FieldDescriptor* field = message.GetDescriptor()->field(i);
        const std::string& name = field->name();
        const bool isText = field->cpp_type() == FieldDescriptor::CPPTYPE_STRING;
        const int number = name == "company_id"     ? company.first
                           : name == "page_start"   ? 0
                           : name == "page_size"    ? 100
                           : name == "address_kind" ? 1
                                                    : id;
        if (name == "start_date" || name == "end_date" || (name == "data_type" && !withType))
            continue;
        if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE)
            fill(field->is_repeated() ? *reflection.AddMessage(&message, field)
                                      : *reflection.MutableMessage(&message, field),
                 company, id, withType);
        else if (isText && !field->is_repeated())
            reflection.SetString(&message, field,
                                 name.find("path") == std::string::npos ? company.name
                                                                        : "/" + std::string(company.name));
        else if (field->cpp_type() == FieldDescriptor::CPPTYPE_UINT32 && field->is_repeated())
            reflection.AddUInt32(&message, field, number);
        else if (field->cpp_type() == FieldDescriptor::CPPTYPE_UINT32)
            reflection.SetUInt32(&message, field, number);
        else if (field->cpp_type() == FieldDescriptor::CPPTYPE_INT32 && !field->is_repeated())
            reflection.SetInt32(&message, field, number);
    }
}

class Rights : public CentreTest
{
protected:
    Rights()
    {
        for (const Company& company : {kOwner, kOther})
            addRecords(company);
        serve();
    }

    void insert(const std::string& table, const std::string& values)
    {
        m_Store.database().execute("INSERT INTO " + table + " VALUES (" + values + ")");
    }

    void addRecords(const Company& company)
    {
        const std::string id = std::to_string(company.first);
        const std::string text = "'" + std::string(company.name) + "'";
        insert("company(id, companyno)", id + ", " + text);
        m_Tokens[company.name] = m_Store.addUser(company.name, company.name);
        m_Store.addBox(company.name, "127.0.0.1:" + id);
        insert("disk(id, company_id, root_path, name, kesta_code, address_kind)",
               id + ", " + id + ", '/" + company.name + "', " + text + ", " + text + ", 1");
        insert("folder(id, disk_id, parent_id, name)", id + ", " + id + ", 0, " + text);
        insert("folder(id, disk_id, parent_id, name)",
               std::to_string(company.first + 1) + ", " + id + ", " + id + ", " + text);
        insert("file(id, parent_id, name)", id + ", " + id + ", " + text);
        insert("comment(id, company_id, commentcontent, commentstate)",
               id + ", " + id + ", " + text + ", " + text);
        insert("image_comment(id, company_id, commentcontent, commentstate)",
               id + ", " + id + ", " + text + ", " + text);
        insert("comment_record(comment_id, data_type_id, record_id)", id + ", 1, " + id);
        insert("comment_record(comment_id, data_type_id, record_id)", id + ", 2, " + id);
        insert("project(project_id, company_id, project_name)", id + ", " + id + ", " + text);
        insert("data_folder(project_id, src_id)", id + ", " + id);
        insert("data_file(project_id, file_id)", id + ", " + id);
        int type = company.first;
        for (const centre::RecordKind& kind : centre::recordKinds())
            if (kind.hasType())
                addRecord(kind, type++, id, text);
            else if (kind.name == "point")
                insert("point(point_id, dq_con_id, con_number)", id + ", " + id + ", " + text);
    }

    void addRecord(const centre::RecordKind& kind, int type, const std::string& id, const std::string& text)
    {
        const std::string typeId = std::to_string(type);
        insert("type(type_id, project_id, data_type)",
               typeId + ", " + id + ", " + (typeId == id ? text : "'" + kind.typeName + "'"));
        insert(kind.name + "(" + kind.idColumn() + ", type_id, sensor)", id + ", " + typeId + ", " + text);
        insert("image_mark(comm_id, data_type_id, record_id)",
               id + ", " + std::to_string(kind.number) + ", " + id);
    }

    /// The answers to a company's user about another's records, with the same words for identifiers and names
    /// whosever they are.
    std::string answers(const MethodDescriptor& method, const Company& caller, const Company& owner)
    {
        callWith(m_Tokens[caller.name]);
        std::string all;
        for (int id = owner.first; id < owner.first + kIdentifiers; ++id) {
            const std::unique_ptr<Message> request(google::protobuf::MessageFactory::generated_factory()
                                                       ->GetPrototype(method.input_type())
                                                       ->New());
            fill(*request, owner, id, method.name() == "queryDataSrcTypeByTypeAndproId");
            std::string text;
            google::protobuf::TextFormat::PrintToString(*request, &text);
            const std::string answer = ask(method.name(), text);
            const std::regex named(std::string(owner.name) + "|\\b" + std::to_string(id) + "\\b");
            all += std::regex_replace(answer, named, "NAMED") + "\n";
        }
        return all;
    }

    std::map<std::string, std::string> m_Tokens;
};

TEST_F(Rights, WhatBelongsToAnotherCompanyIsAnsweredAsWhatDoesNotExist)
{
    std::set<std::string> changes;
    for (const auto& each : {centre::linkChanges(), centre::commentChanges(), centre::registrationChanges()})
        for (const centre::Change& change : each)
            changes.insert(change.name);
    for (const auto* service : {ledgerserver::LedgerServices::descriptor(),
                                Tavrel::TavrelServer::descriptor(), forgeserver::ForgeServices::descriptor()})
        for (const MethodDescriptor* method : methodsOf(*service)) {
            if (kForEveryone.count(method->name()) > 0 || method->name() == "addCommentImage")
                continue; // the latter adds to what the caller's company has
            SCOPED_TRACE(method->name());
            EXPECT_EQ(answers(*method, kOther, kOwner), answers(*method, kOther, kNobody));
            // The requests would find what they must not find.
            if (service != forgeserver::ForgeServices::descriptor() && changes.count(method->name()) == 0)
                EXPECT_NE(answers(*method, kOwner, kOwner), answers(*method, kOwner, kNobody));
        }
}

TEST_F(Rights, WhatIsSharedIsReadAndNotChanged)
{
    const auto expect = [this](bool found, const char* operation, const std::string& request) {
        EXPECT_EQ(ask(operation, request).find("OWNER") != std::string::npos, found) << operation;
    };
    const auto expectAll = [&](bool disk, bool project) {
        awaitChanges();
        expect(disk, "queryDataAddress", "company_id: 31 address_kind: 1");
        expect(disk, "queryDataAddressByName", "company_id: 31 name: 'OWNER'");
        expect(disk, "queryDataAddress", "company_id: 11 address_kind: 1");
        expect(disk, "getFileFullPath", "file_id: 11");
        expect(disk, "querySrcTableByParentSrcId", "parent_src_id: 0 page_size: 9");
        EXPECT_EQ(ask("getKestaInfo", "code: 'OWNER'").find("status_code: 0") != std::string::npos, disk);
        EXPECT_EQ(ask("CheckTransfer", "serv_path: '/OWNER/x'"), disk ? "passed: true" : "passed: false");
        expect(disk || project, "queryCompanyTableByCompanyID", "company_id: 11");
        expect(project, "queryDataSrc", "company_id: 31 page_size: 9");
        expect(project, "searchDataType", "company_id: 31 proname: 'OWNER'");
        expect(project, "queryDataSrcControlInfoByDqConID", "dqcon_id: 11 page_size: 9");
        expect(false, "queryUserTableByUserName", "username: 'OWNER'");
        expect(false, "queryCommentInfo", "company_id: 11");
    };
    callWith(m_Tokens["OTHER"]);
    expectAll(false, false);
    centre::Accounts accounts(m_Store.database());
    accounts.share(centre::Accounts::Shared::Disk, "OWNER", "OWNER", "OTHER");
    expectAll(true, false);
    accounts.share(centre::Accounts::Shared::Project, "OWNER", "OWNER", "OTHER");
    expectAll(true, true);
    EXPECT_THAT(ask("CreateFolder", "second_id: 11 folder_path: 'x'"),
                testing::HasSubstr("can only be read"));
    ask("addDataFile", "project_id: 11 file_id: 31");
    EXPECT_THAT(m_Errors, testing::HasSubstr("project 11 is shared by another company"));
    EXPECT_EQ(ask("addDataFile", "project_id: 31 file_id: 11"), "result: 0");
    accounts.unshare(centre::Accounts::Shared::Disk, "OWNER", "OWNER", "OTHER");
    accounts.unshare(centre::Accounts::Shared::Project, "OWNER", "OWNER", "OTHER");
    expectAll(false, false);
}

TEST_F(Rights, ATokenCountsUntilItsEndOrRevocation)
{
    centre::Accounts accounts(m_Store.database());
    const auto asked = [&](const std::string& token) {
        awaitChanges();
        callWith(token);
        return ask("queryUserTableByUserName", "username: 'OTHER'");
    };
    const auto refused = [](const char* reason) { return testing::HasSubstr(reason); };
    const auto answered = testing::HasSubstr("result: 0");
    const auto now = std::time(nullptr);
    const std::string laptop = accounts.addToken("OTHER", {"laptop", now + 3600});
    EXPECT_THAT(asked(laptop), answered);
    accounts.renewToken("OTHER", {"laptop", now - 1});
    EXPECT_THAT(asked(laptop), refused(centre::kExpiredToken));
    accounts.renewToken("OTHER", {"laptop", {}});
    EXPECT_THAT(asked(laptop), answered);
    const std::string replacement = accounts.replaceToken("OTHER", {"laptop", {}});
    EXPECT_THAT(asked(laptop), refused(centre::kRevokedToken));
    EXPECT_THAT(asked(replacement), answered);
    accounts.revokeToken("OTHER", "laptop");
    EXPECT_THAT(asked(replacement), refused(centre::kRevokedToken));
    EXPECT_THAT(asked(m_Tokens["OTHER"]), answered);

    accounts.setRole("OTHER", centre::Role::Reader);
    EXPECT_EQ(ask("addCommentInfo", "company_id: 31 commentcontent: 'x'"), "result: -2");
    accounts.removeUser("OTHER");
    EXPECT_THAT(asked(m_Tokens["OTHER"]), refused(centre::kUnknownToken));
    expectError(centre::ExitCode::Failed, "no valid token laptop",
                [&] { accounts.revokeToken("OWNER", "laptop"); });
    expectError(centre::ExitCode::Failed, "list-users", [&] { accounts.removeUser("OTHER"); });
}

TEST_F(Rights, EveryQueryAsksForTheCallerUnlessItIsForEveryone)
{
    for (const centre::Operation& operation : centre::ledgerOperations(m_Store.database().dialect()))
        EXPECT_EQ(operation.sql.find(":caller_company") == std::string::npos,
                  kForEveryone.count(operation.name) > 0)
            << operation.name;
}

} // namespace

#include "tests/support/MethodTable.h"

namespace {

const char kScene[] = "sat_name: '北' main_file: 'a' main_file: 'b' meta_file: 'c'";
const char kScan[] =
    "ads_text1: '北' ads_text2: '2' ads_text3: '3' ads_text4: '4' ads_text5: '5' ads_text6: '6'";

/// A reader of a scene, on an answer with the name and files, or with none.
template <class Run>
Method scene(const std::string& name, const std::string& operation, bool bare, Run run)
{
    return method<QString, QStringList, QStringList>(
        name, Verdict::confirmed, operation + " {image_id: 4294967294}", bare ? "" : kScene,
        bare ? "ok '' kept kept" : "ok 北 kept a b kept c", run);
}

class SceneMetadata : public MethodTable
{
};

} // namespace

TEST_F(SceneMetadata, IsTakenOnSuccessOnly)
{
    run({method("getSpot5FromMetadataDim", Verdict::confirmed, "Spot5FromDim {image_id: 4294967294}", kScene,
                "北", [](auto& m) { return m.getSpot5FromMetadataDim(4294967294u); })});
    for (const bool bare : {false, true}) {
        run({scene("getSpot6FromDim", "Spot6FromDim", bare,
                   [](auto& m, auto&... outs) { return m.getSpot6FromDim(4294967294u, outs...); }),
             scene("getAlosFromSummary", "AlosFromSummary", bare,
                   [](auto& m, auto&... outs) { return m.getAlosFromSummary(4294967294u, outs...); }),
             method<QString, QString, QString, QString, QString, QString>(
                 "getAdsFromSup", Verdict::confirmed, "AdsFromSup {image_id: 4294967294}", bare ? "" : kScan,
                 bare ? "ok '' '' '' '' '' ''" : "ok 北 2 3 4 5 6",
                 [](auto& m, auto&... outs) { return m.getAdsFromSup(4294967294u, outs...); })});
    }
}

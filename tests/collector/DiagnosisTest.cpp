// SPDX-License-Identifier: Apache-2.0
#include "collector/Diagnosis.h"

#include "core/Text.h"

#include <set>
#include <string>

#include <gtest/gtest.h>

namespace {

using namespace ostrel;

/// Everything that the tab shows, on one line each.
std::string told(const Diagnosis& diagnosis)
{
    std::string text = "[" + diagnosis.summary + "] [" + diagnosis.text + "]";
    for (const DiagAction& action : diagnosis.actions)
        text += " " + action.label + "/" + action.kind + "/" + action.target + "/" + memLabel(action.estMB)
            + "/" + action.reason + "/" + action.risk;
    return text;
}

TEST(Diagnosis, ReadsEachFormOfAnswerAndDropsWhatLacksItsWords)
{
    struct Case {
        std::string output;
        std::string shown;
        int status = 0;
    };
    const std::string deep = std::string(200, '[') + std::string(200, ']');
    const Case cases[] {
        { R"({"source":"x","summary":"two","findings":[{"title":"A","level":"warn","body":"b"},{"title":"C"},
            {"body":"no title"},7,{"title":8}],"actions":[{"label":"l","kind":"k","target":"t","est_mb":1536,
            "reason":"r","risk":"s"},{"label":"only"}]})",
            "[x · two · 1 action] [WARN · A\nb\n\nINFO · C\n] l/k/t/1.5 gb/r/s" },
        { "{}", "[local CLI · analysis ready · 0 actions] []" },
        { R"({"source":1,"summary":[],"findings":{"title":"A"},"actions":"no"})",
            "[local CLI · analysis ready · 0 actions] []" },
        { R"({"actions":[{"label":"l","kind":"k","est_mb":"12","reason":5},{"label":"m","kind":"k","est_mb":2.5},
            {"kind":"k"}]})",
            "[local CLI · analysis ready · 2 actions] [] l/k//0 mb// m/k//0 mb//" },
        { R"([{"label":"l","kind":"k","est_mb":900,"reason":"r","risk":"s"},{"label":"m","kind":"k"}])",
            "[legacy analyzer · 2 actions · tap to execute] [] l/k//900 mb// m/k//0 mb//" },
        { "[]", "[legacy analyzer · 0 actions · tap to execute] []" },
        { R"([{"label":"l","kind":"k"},3])", R"([] [[{"label":"l","kind":"k"},3]])" },
        { "3", "[] [3]" },
        { "all is well\n", "[] [all is well\n]" },
        { "{\"source\":", "[] [{\"source\":]" },
        { deep, "[] [" + deep + "]" },
        { "", "[] [analysis failed (exit 0).]" },
        { "{\"a\":\"\xff\"}", "[] [analysis failed (exit 0).]" },
        { "{}", "[] [analysis failed (exit 15).]", 15 },
        { "{}", "[] [analysis failed (exit -1).]", -1 },
    };
    for (const Case& c : cases)
        EXPECT_EQ(told(readDiagnosis(c.output, c.status, "local CLI")), c.shown);
}

TEST(Diagnosis, EachActionHasAnIdentityOfItsOwn)
{
    std::string output = "[";
    for (int at = 0; at < 100; ++at)
        output += std::string(at ? "," : "") + R"({"label":"l","kind":"k"})";
    std::set<std::string> ids;
    for (const DiagAction& action : readDiagnosis(output + "]", 0, "").actions) {
        EXPECT_EQ(action.id.size(), 36U);
        EXPECT_EQ(action.id[14], '4') << action.id;
        ids.insert(action.id);
    }
    EXPECT_EQ(ids.size(), 100U);
}

} // namespace

#include "platform/linux/JsonFilePreferenceStore.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <iterator>
#include <limits>

namespace vardel {
namespace {

class RecordingLog final : public Log {
public:
    void warning(std::string_view message) override { warnings.emplace_back(message); }
    void info(std::string_view) override { }

    std::vector<std::string> warnings;
};

std::string contents(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    return { std::istreambuf_iterator<char>(stream), {} };
}

class JsonFilePreferenceStoreTest : public ::testing::Test {
protected:
    std::filesystem::path file() const { return folder_.path() / "config" / "vardel" / "defaults.json"; }

    testing::TemporaryFolder folder_;
    RecordingLog log_;
};

TEST_F(JsonFilePreferenceStoreTest, EveryKindOfValueReadsBackTheSameAfterARestart)
{
    Value::Dictionary nested { { "list", Value::List { 1, "two", 3.5, false } }, { "when", Date { 1767603600.5 } } };
    std::vector<std::pair<std::string, Value>> values = {
        { "text", "Grüße \"quoted\"\n" },
        { "integer", int64_t { -9007199254740993 } },
        { "largest", std::numeric_limits<int64_t>::max() },
        { "real", 0.1 },
        { "wholeReal", 2.0 },
        { "boolean", true },
        { "date", Date { 1767603600 } },
        { "preciseDate", Date { 1767603600.123456789 } },
        { "oldDate", Date { -86400.25 } },
        { "url", Url { "https://example.com/a?b=c" } },
        { "point", Point { 1.5, -2 } },
        { "size", Size { 1920, 1080 } },
        { "rect", Rect { { 0, 0 }, { 10.25, 20 } } },
        { "range", Range { 3, 7 } },
        { "emptyList", Value::List {} },
        { "dictionary", nested },
        { "dictionaryOfTwo", Value::Dictionary { { "date", "not a date" }, { "other", 1 } } },
    };
    {
        JsonFilePreferenceStore store(file(), log_);
        for (const auto& [key, value] : values)
            store.setObject(key, value);
    }
    JsonFilePreferenceStore reopened(file(), log_);
    for (const auto& [key, value] : values) {
        auto read = reopened.object(key);
        ASSERT_TRUE(read) << key;
        EXPECT_EQ(*read, value) << key;
        EXPECT_EQ(read->kind(), value.kind()) << key;
    }
    EXPECT_TRUE(log_.warnings.empty());
    // The file is the value encoding of scenarios, readable by hand.
    auto written = nlohmann::json::parse(contents(file()));
    EXPECT_EQ(written["date"], nlohmann::json({ { "date", "2026-01-05T09:00:00Z" } }));
    EXPECT_EQ(written["url"], nlohmann::json({ { "url", "https://example.com/a?b=c" } }));
}

TEST_F(JsonFilePreferenceStoreTest, RemovingAKeyIsWrittenAndNoTemporaryFileStays)
{
    JsonFilePreferenceStore store(file(), log_);
    store.setObject("kept", 1);
    store.setObject("removed", 2);
    store.setObject("removed", std::nullopt);

    EXPECT_EQ(JsonFilePreferenceStore(file(), log_).object("removed"), std::nullopt);
    EXPECT_EQ(JsonFilePreferenceStore(file(), log_).getInt("kept"), 1);
    int files = 0;
    for ([[maybe_unused]] const auto& entry : std::filesystem::directory_iterator(file().parent_path()))
        ++files;
    EXPECT_EQ(files, 1);
}

TEST_F(JsonFilePreferenceStoreTest, ADamagedFileIsKeptAsideAndTheDefaultsApply)
{
    for (const std::string& damaged : std::vector<std::string> { "{\"a\": 1,", "[1, 2]",
             R"({"when": {"date": "yesterday"}})", R"({"list": [1, null]})", R"({"huge": 18446744073709551615})",
             std::string(5000, '[') + std::string(5000, ']') }) {
        std::filesystem::create_directories(file().parent_path());
        std::ofstream(file(), std::ios::binary) << damaged;
        log_.warnings.clear();

        JsonFilePreferenceStore store(file(), log_);
        EXPECT_EQ(store.object("a"), std::nullopt) << damaged;
        ASSERT_EQ(log_.warnings.size(), 1u) << damaged;
        EXPECT_NE(log_.warnings[0].find("defaults.json.corrupt"), std::string::npos) << log_.warnings[0];
        EXPECT_EQ(contents(file().string() + ".corrupt"), damaged);
        EXPECT_FALSE(std::filesystem::exists(file()));

        store.setObject("a", 1);
        EXPECT_EQ(JsonFilePreferenceStore(file(), log_).getInt("a"), 1);
        std::filesystem::remove(file());
    }
}

TEST_F(JsonFilePreferenceStoreTest, ValuesThatWouldReadBackDifferentlyAreRefused)
{
    JsonFilePreferenceStore store(file(), log_);
    store.setObject("key", "kept");
    for (const Value& refused : { Value(std::numeric_limits<double>::quiet_NaN()),
             Value(Value::List { std::numeric_limits<double>::infinity() }),
             Value(Value::Dictionary { { "url", "looks typed" } }) }) {
        store.setObject("key", refused);
        EXPECT_EQ(store.getString("key"), "kept");
    }
    EXPECT_EQ(log_.warnings.size(), 3u);
    EXPECT_EQ(JsonFilePreferenceStore(file(), log_).getString("key"), "kept");
}

TEST_F(JsonFilePreferenceStoreTest, NullMembersWrittenByHandAreAbsent)
{
    std::filesystem::create_directories(file().parent_path());
    std::ofstream(file()) << R"({"a": null, "b": {"c": null, "d": 1}})";
    JsonFilePreferenceStore store(file(), log_);
    EXPECT_EQ(store.object("a"), std::nullopt);
    EXPECT_EQ(store.object("b"), Value(Value::Dictionary { { "d", 1 } }));
    EXPECT_TRUE(log_.warnings.empty());
}

TEST_F(JsonFilePreferenceStoreTest, TheFolderFollowsXdgConfigHome)
{
    auto lookup = [](std::map<std::string, std::string> variables) {
        return [variables](const char* name) -> const char* {
            auto found = variables.find(name);
            return found == variables.end() ? nullptr : found->second.c_str();
        };
    };
    EXPECT_EQ(JsonFilePreferenceStore::configurationFolder(lookup({ { "XDG_CONFIG_HOME", "/x" }, { "HOME", "/h" } })),
        "/x/vardel");
    EXPECT_EQ(JsonFilePreferenceStore::configurationFolder(lookup({ { "XDG_CONFIG_HOME", "rel" }, { "HOME", "/h" } })),
        "/h/.config/vardel");
    EXPECT_EQ(JsonFilePreferenceStore::configurationFolder(lookup({})), std::nullopt);
}

} // namespace
} // namespace vardel

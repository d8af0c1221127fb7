#include "platform/linux/JsonFilePreferenceStore.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <fstream>
#include <iterator>
#include <limits>
#include <optional>
#include <random>
#include <utility>

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
    std::string tooDeep = std::string(1001, '[') + std::string(1001, ']');
    // Each file, and what the warning says about where the damage is.
    for (const auto& [damaged, where] : std::vector<std::pair<std::string, std::string>> {
             { "{\"a\": 1,", "not valid JSON" },
             { "[1, 2]", "does not hold an object" },
             { R"({"a": 1, "far": 1e400})", "not valid JSON" },
             { R"({"a": 1, "sync": {"last": [{"date": "yesterday"}]}})", "$.sync.last[0].date: " },
             { R"({"list": [1, null]})", "$.list[1]: " },
             { R"({"huge": 18446744073709551615})", "$.huge: " },
             { R"({"who": {"ref": "window"}})", "$.who: " },
             { R"({"deep": )" + tooDeep + "}", "$.deep: " },
         }) {
        std::filesystem::create_directories(file().parent_path());
        std::ofstream(file(), std::ios::binary) << damaged;
        log_.warnings.clear();

        JsonFilePreferenceStore store(file(), log_);
        EXPECT_EQ(store.object("a"), std::nullopt) << damaged;
        ASSERT_EQ(log_.warnings.size(), 1u) << damaged;
        EXPECT_NE(log_.warnings[0].find("defaults.json.corrupt"), std::string::npos) << log_.warnings[0];
        EXPECT_NE(log_.warnings[0].find(where), std::string::npos) << log_.warnings[0];
        EXPECT_EQ(contents(file().string() + ".corrupt"), damaged);
        EXPECT_FALSE(std::filesystem::exists(file()));

        store.setObject("a", 1);
        EXPECT_EQ(JsonFilePreferenceStore(file(), log_).getInt("a"), 1);
        std::filesystem::remove(file());
    }
}

nlohmann::ordered_json randomEncodedValue(std::mt19937& random, int depth = 0)
{
    const nlohmann::ordered_json typed[]
        = { { { "date", "2026-01-05T09:00:00.25Z" } }, { { "url", "https://x/" } }, { { "point", { 1, 2.5 } } },
              { { "size", { 3, 4 } } }, { { "rect", { 0, 0, 1, 1 } } }, { { "range", { 1, 2 } } } };
    const char* const keys[] = { "date", "url", "point", "range", "ref", "error", "name", "list" };
    switch (random() % (depth < 2 ? 10 : 7)) {
    case 0:
        return nullptr;
    case 1:
        return random() % 2 == 0;
    case 2:
        return static_cast<int64_t>(random() % 7) - 3;
    case 3:
        return random() % 4 == 0 ? std::numeric_limits<uint64_t>::max() : uint64_t { 5 };
    case 4:
        return 0.1 * static_cast<double>(random() % 30);
    case 5:
        return random() % 2 == 0 ? "2026-01-05T09:00:00Z" : "text";
    case 6:
        return typed[random() % std::size(typed)];
    case 7: {
        nlohmann::ordered_json array = nlohmann::ordered_json::array();
        for (unsigned count = random() % 4; count > 0; --count)
            array.push_back(randomEncodedValue(random, depth + 1));
        return array;
    }
    default: {
        nlohmann::ordered_json object = nlohmann::ordered_json::object();
        for (unsigned count = random() % 3; count > 0; --count)
            object[keys[random() % std::size(keys)]] = randomEncodedValue(random, depth + 1);
        return object;
    }
    }
}

// Hand edits of every sort: a file either loads, and then reads back the same once written again,
// or is set aside with one warning. Nothing throws.
TEST_F(JsonFilePreferenceStoreTest, HandEditedFilesLoadFaithfullyOrAreSetAside)
{
    std::mt19937 random(20260105);
    int loaded = 0;
    for (int round = 0; round < 300; ++round) {
        nlohmann::ordered_json document = nlohmann::ordered_json::object();
        for (unsigned count = 1 + random() % 3; count > 0; --count)
            document["key" + std::to_string(count)] = randomEncodedValue(random);
        SCOPED_TRACE(document.dump());
        std::filesystem::create_directories(file().parent_path());
        std::ofstream(file(), std::ios::binary) << document.dump();
        log_.warnings.clear();

        std::optional<JsonFilePreferenceStore> store;
        ASSERT_NO_THROW(store.emplace(file(), log_));
        if (log_.warnings.empty()) {
            ++loaded;
            store->synchronize();
            JsonFilePreferenceStore reopened(file(), log_);
            for (const auto& [key, encoded] : document.items()) {
                EXPECT_EQ(store->object(key).has_value(), !encoded.is_null()) << key;
                EXPECT_EQ(reopened.object(key), store->object(key)) << key;
            }
            EXPECT_TRUE(log_.warnings.empty());
        } else {
            EXPECT_EQ(log_.warnings.size(), 1u);
            EXPECT_EQ(contents(file().string() + ".corrupt"), document.dump());
        }
        std::filesystem::remove_all(file().parent_path());
    }
    // Both outcomes occur, or the values are not reaching what matters.
    EXPECT_GT(loaded, 30);
    EXPECT_LT(loaded, 270);
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
    std::ofstream(file())
        << R"({"a": null, "b": {"c": null, "d": 1}, "e": {"date": "2026-01-05T09:00:00Z", "f": null}})";
    JsonFilePreferenceStore store(file(), log_);
    EXPECT_EQ(store.object("a"), std::nullopt);
    EXPECT_EQ(store.object("b"), Value(Value::Dictionary { { "d", 1 } }));
    // What is left once null members are gone is what the file will hold when written again.
    EXPECT_EQ(store.object("e"), Value(Date { 1767603600 }));
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

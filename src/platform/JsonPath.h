#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>

namespace vardel {

// Where a value sits in a JSON document ("$.applications[2].pid"), for error messages. Paths share
// their prefixes, so keeping one per element of a large tree costs little.
class JsonPath {
public:
    // The root of a document that the messages need not name.
    JsonPath();
    // The root of the named file.
    explicit JsonPath(std::string sourceName);

    JsonPath member(std::string_view key) const;
    JsonPath index(size_t) const;

    std::string toString() const;

    // Throws JsonValueError "FILE: PATH: problem", or "PATH: problem" without a file name.
    [[noreturn]] void fail(std::string_view problem) const;

private:
    struct Step {
        std::shared_ptr<const Step> parent;
        std::string text;
    };

    JsonPath(std::shared_ptr<const std::string> sourceName, std::shared_ptr<const Step> last);
    JsonPath appended(std::string text) const;

    std::shared_ptr<const std::string> sourceName_;
    std::shared_ptr<const Step> last_;
};

} // namespace vardel

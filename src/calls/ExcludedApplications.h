#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vardel {

// The applications never taken for calls: the built-in ones and those the user disabled, less
// those the user enabled again. Asked per identifier, so the built-in set is never copied.
class ExcludedApplications {
public:
    explicit ExcludedApplications(std::vector<std::string> disabled = {}, std::vector<std::string> enabled = {})
        : disabled_(std::move(disabled))
        , enabled_(std::move(enabled))
    {
    }

    // As the user's preferences make it now.
    static ExcludedApplications current();

    bool contains(std::string_view bundleIdentifier) const;

private:
    std::vector<std::string> disabled_;
    std::vector<std::string> enabled_;
};

} // namespace vardel

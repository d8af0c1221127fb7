#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace vardel::linux_desktop {

// Object attributes are text another application wrote; these read the ones that carry more than
// text, taking nothing for granted.
namespace AtspiObjectAttributes {

// A heading's `level`: decimal digits whose number fits an int; nothing for anything else.
std::optional<int64_t> headingLevel(std::string_view text);
// The words of a `class` attribute.
std::vector<std::string> classNames(std::string_view text);

} // namespace AtspiObjectAttributes

} // namespace vardel::linux_desktop

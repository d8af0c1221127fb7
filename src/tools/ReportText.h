#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Pieces of the text reports of the vardel command.
namespace vardel::ReportText {

// The text cut to at most `longest` characters, ending in "…" when cut; never inside a UTF-8
// sequence.
std::string shortened(std::string_view text, size_t longest);
// A compact duration ("1h 2m 5s") right-aligned in a column wide enough for "23h 59m 59s".
std::string durationColumn(double seconds);

} // namespace vardel::ReportText

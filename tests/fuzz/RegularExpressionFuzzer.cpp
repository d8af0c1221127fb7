// A pattern and a text of any bytes (split at the first NUL): compiling either fails cleanly or gives
// an expression whose matching ends, within its step limit, whatever the text.

#include "platform/RegularExpression.h"

#include <cstddef>
#include <cstdint>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace vardel;
    std::string_view input(reinterpret_cast<const char*>(data), size);
    size_t split = input.find('\0');
    std::string_view pattern = input.substr(0, split);
    std::string_view text = split == std::string_view::npos ? std::string_view() : input.substr(split + 1);
    for (unsigned options : { RegularExpression::none, RegularExpression::caseInsensitive }) {
        auto expression = RegularExpression::compile(pattern, options);
        if (!expression)
            continue;
        expression->matchesAnywhere(text);
        expression->matchesWhole(text);
        expression->firstMatch(text);
        expression->replacingMatches(text, "[$0]");
    }
    return 0;
}

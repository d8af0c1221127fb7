#include "tools/ReportText.h"

#include "product/DurationFormatter.h"

namespace vardel::ReportText {

namespace {

constexpr size_t durationWidth = 11;

bool isContinuationByte(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

} // namespace

std::string shortened(std::string_view text, size_t longest)
{
    if (longest == 0)
        return {};
    size_t characters = 0;
    for (size_t index = 0; index < text.size(); ++index) {
        if (isContinuationByte(text[index]))
            continue;
        if (characters == longest - 1) {
            // Cut here unless what remains is exactly this one last character.
            size_t next = index + 1;
            while (next < text.size() && isContinuationByte(text[next]))
                ++next;
            if (next == text.size())
                return std::string(text);
            return std::string(text.substr(0, index)) + "…";
        }
        ++characters;
    }
    return std::string(text);
}

std::string durationColumn(double seconds)
{
    std::string duration = DurationFormatter::format(seconds);
    return duration.size() < durationWidth ? std::string(durationWidth - duration.size(), ' ') + duration : duration;
}

} // namespace vardel::ReportText

// A preference file of any content: it reads as values or fails with the JSON path of its first
// problem, and what it reads, once written, reads back and writes again to the same text.

#include "platform/JsonCursor.h"
#include "platform/JsonValueError.h"
#include "platform/ValueDecoder.h"
#include "platform/ValueJson.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    using namespace vardel;
    auto parsed = JsonCursor::Json::parse(data, data + size, nullptr, false);
    if (parsed.is_discarded() || !parsed.is_object())
        return 0;
    Value::Dictionary values;
    try {
        values = ValueDecoder().decodeDictionary(JsonCursor(parsed, JsonPath()));
    } catch (const JsonValueError&) {
        return 0;
    }
    auto written = ValueJson::encode(Value(values));
    Value::Dictionary again = ValueDecoder().decodeDictionary(JsonCursor(written, JsonPath()));
    if (ValueJson::encode(Value(again)) != written)
        std::abort();
    return 0;
}

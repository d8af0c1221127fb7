#include "platform/scripted/ScenarioValueDecoder.h"

#include "platform/ValueDecoder.h"
#include "platform/scripted/UnresolvedReference.h"

#include <limits>
#include <memory>

namespace vardel::scripted {

namespace {

std::optional<Value> refusedOutsideAttributes(const JsonCursor&, const std::string& key, const JsonCursor& content)
{
    if (key == "ref")
        content.fail("element references are only for attributes");
    if (key == "error")
        content.fail("error codes are only for attributes");
    return std::nullopt;
}

ValueDecoder::TagReader attributeTags(std::vector<ElementReferenceUse>& references)
{
    return [&references](
               const JsonCursor& object, const std::string& key, const JsonCursor& content) -> std::optional<Value> {
        if (key == "error")
            content.fail("an error code must be the whole attribute value");
        if (key != "ref")
            return std::nullopt;
        std::string id = content.text();
        references.push_back({ id, object.path() });
        return AXUIElement(std::make_shared<const UnresolvedReference>(std::move(id)));
    };
}

} // namespace

Value ScenarioValueDecoder::plain(const JsonCursor& cursor)
{
    return ValueDecoder(refusedOutsideAttributes).decode(cursor);
}

Value::Dictionary ScenarioValueDecoder::plainDictionary(const JsonCursor& cursor)
{
    return ValueDecoder(refusedOutsideAttributes).decodeDictionary(cursor);
}

AttributeValue ScenarioValueDecoder::attribute(const JsonCursor& cursor, std::vector<ElementReferenceUse>& references)
{
    if (cursor.isObject() && cursor.json().size() == 1) {
        if (auto code = cursor.member("error")) {
            auto value = code->integerBetween(std::numeric_limits<AXError>::min(), -1);
            return AttributeError { static_cast<AXError>(value) };
        }
    }
    return ValueDecoder(attributeTags(references)).decode(cursor);
}

} // namespace vardel::scripted

#pragma once

#include "platform/JsonCursor.h"
#include "platform/scripted/Scenario.h"

#include <cstddef>

namespace vardel::scripted {

// Reads an element tree of a scenario. The walk keeps its own stack: a tree nested deeper than the
// limit is an error at the tree's root, never a stack overflow.
class ElementTreeReader {
public:
    static constexpr size_t maximumDepth = 1000;

    static ElementTreeDescription read(const JsonCursor& root);

private:
    static ElementDescription readElement(const JsonCursor&, std::vector<ElementReferenceUse>& references);
    static void readReservedKey(const std::string& key, const JsonCursor& value, ElementDescription&);
};

} // namespace vardel::scripted

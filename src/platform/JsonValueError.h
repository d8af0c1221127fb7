#pragma once

#include <stdexcept>

namespace vardel {

// A JSON document that does not hold what its reader expects. what() names where and what:
// "FILE: $.json.path: problem", or "$.json.path: problem" for a document without a name.
class JsonValueError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace vardel

#pragma once

#include <stdexcept>

namespace vardel::scripted {

// A scenario that cannot be read or is malformed. what() is the one line the program prints:
// "FILE: $.json.path: problem".
class ScenarioError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

} // namespace vardel::scripted

#pragma once

#include "product/DatabaseError.h"

#include <cassert>
#include <utility>
#include <variant>

namespace vardel {

// A database operation's value, or the error that prevented it.
template<typename T> class DatabaseResult {
public:
    using Value = T;

    DatabaseResult(T value)
        : outcome_(std::move(value))
    {
    }
    DatabaseResult(DatabaseError error)
        : outcome_(std::move(error))
    {
    }

    bool ok() const { return std::holds_alternative<T>(outcome_); }

    const T& value() const&
    {
        assert(ok());
        return std::get<T>(outcome_);
    }
    T&& value() &&
    {
        assert(ok());
        return std::get<T>(std::move(outcome_));
    }
    const DatabaseError& error() const
    {
        assert(!ok());
        return std::get<DatabaseError>(outcome_);
    }

private:
    std::variant<T, DatabaseError> outcome_;
};

} // namespace vardel

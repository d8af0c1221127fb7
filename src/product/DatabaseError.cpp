#include "product/DatabaseError.h"

namespace vardel {

DatabaseError DatabaseError::statementFailure(std::string_view reason, bool damaged)
{
    return { damaged ? Kind::damaged : Kind::statementFailed, "A database operation failed: " + std::string(reason) };
}

const char* kindName(DatabaseError::Kind kind)
{
    switch (kind) {
    case DatabaseError::Kind::cannotOpen:
        return "cannotOpen";
    case DatabaseError::Kind::newerSchema:
        return "newerSchema";
    case DatabaseError::Kind::tooShort:
        return "tooShort";
    case DatabaseError::Kind::endsBeforeStart:
        return "endsBeforeStart";
    case DatabaseError::Kind::notFound:
        return "notFound";
    case DatabaseError::Kind::statementFailed:
        return "statementFailed";
    case DatabaseError::Kind::damaged:
        return "damaged";
    }
    return "unknown";
}

std::ostream& operator<<(std::ostream& stream, const DatabaseError& error)
{
    return stream << kindName(error.kind) << ": " << error.message;
}

} // namespace vardel

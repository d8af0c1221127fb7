#pragma once

#include "product/DatabaseError.h"

#include <functional>
#include <string_view>

namespace vardel {

// Shows a database error to the user: always as a log warning, and also through the alert that the
// application installs once it can show one.
class DatabaseErrorPresenter {
public:
    using Alert = std::function<void(const DatabaseError&)>;

    void setAlert(Alert alert) { alert_ = std::move(alert); }
    // `origin` names the code that ran the operation, such as "RunningCallDetector:622".
    void present(std::string_view origin, const DatabaseError&) const;

private:
    Alert alert_;
};

} // namespace vardel

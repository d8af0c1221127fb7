#pragma once

#include <string>
#include <vector>

namespace vardel {

// A modal alert in the warning style.
struct AlertRequest {
    std::string message;
    std::string informativeText;
    // The first is the default button.
    std::vector<std::string> buttons;
    bool showsSuppressionButton = false;
    // Whether the check box is ticked when the alert opens.
    bool suppressionState = false;
};

struct AlertResponse {
    // Counted from 1, in the order of the request's buttons.
    int button = 1;
    bool suppressionState = false;
};

class Alerts {
public:
    virtual ~Alerts() = default;
    // Blocks until the user has answered.
    virtual AlertResponse runModal(const AlertRequest&) = 0;
};

} // namespace vardel

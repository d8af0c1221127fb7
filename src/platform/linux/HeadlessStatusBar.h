#pragma once

#include "platform/StatusBar.h"

namespace vardel::linux_desktop {

// The Linux desktop has no status item in this build: the item's look is kept so that it can be
// asked for, and the menu never opens. `vardel` stands in for the menu's pause and resume.
class HeadlessStatusBar final : public StatusBar {
public:
    void installStatusItem(const std::string&, Menu&, MenuDelegate&) override { }
    void updateStatusItem(const StatusItemAppearance& appearance) override { appearance_ = appearance; }
    uint64_t currentModifierFlags() override { return 0; }

    const StatusItemAppearance& appearance() const { return appearance_; }

private:
    StatusItemAppearance appearance_;
};

} // namespace vardel::linux_desktop

#pragma once

#include "support/HeadlessDesktop.h"

namespace vardel::testing {

// The one headless desktop of the end-to-end suite, made by the first test that needs it and gone
// when the process ends: making a desktop takes seconds, and no test needs a fresh one as long as
// each stops what it started.
inline HeadlessDesktop& sharedDesktop()
{
    static HeadlessDesktop desktop;
    return desktop;
}

} // namespace vardel::testing

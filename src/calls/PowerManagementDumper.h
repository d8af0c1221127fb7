#pragma once

namespace vardel {

// The diagnostic dump of the "--dumpPMAssertions" mode: the power-management assertions, how they
// are classified and the calls the detector would derive from them, printed for support.
class PowerManagementDumper {
public:
    // Prints the dump to standard output; returns when everything is printed.
    static void dumpPowerManagementAssertions();
};

} // namespace vardel

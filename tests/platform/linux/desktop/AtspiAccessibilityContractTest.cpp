#include "platform/AccessibilityContract.h"
#include "platform/linux/desktop/LiveLinuxDesktop.h"

namespace vardel::testing {

namespace {

class LinuxContractFixture : public AccessibilityContractFixture {
public:
    Platform& platform() override { return *liveLinuxDesktop().platform; }
    ProcessIdentifier applicationPid() override { return liveLinuxDesktop().contractApplication; }
};

} // namespace

INSTANTIATE_TYPED_TEST_SUITE_P(LinuxDesktop, AccessibilityContractTest, LinuxContractFixture);

} // namespace vardel::testing

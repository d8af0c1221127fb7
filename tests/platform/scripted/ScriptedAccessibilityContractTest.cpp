#include "platform/AccessibilityContract.h"
#include "platform/scripted/ScriptedDesktop.h"

namespace vardel::testing {
namespace {

class ScriptedContractFixture : public AccessibilityContractFixture {
public:
    ScriptedContractFixture()
        : desktop_(scripted::ScriptedDesktop::fromJson(R"json({
            "applications": [{ "pid": 4242, "bundleIdentifier": "test.contract", "ui": {
              "AXRole": "AXApplication",
              "children": [{ "AXRole": "AXWindow", "AXTitle": "Contract Window",
                "AXPosition": { "point": [0, 0] }, "AXSize": { "size": [800, 600] },
                "children": [
                  { "AXRole": "AXButton", "AXTitle": "Press Me", "AXFocused": false,
                    "AXPosition": { "point": [100, 200] }, "AXSize": { "size": [80, 30] },
                    "settable": ["AXFocused"], "actions": { "AXPress": "press" } },
                  { "AXRole": "AXScrollArea", "children": [
                    { "AXRole": "AXWebArea", "AXURL": { "url": "https://example.com/contract" } }] }] }] } }],
            "frontmost": 4242 })json"))
    {
    }

    Platform& platform() override { return *desktop_; }
    ProcessIdentifier applicationPid() override { return 4242; }

private:
    std::unique_ptr<scripted::ScriptedDesktop> desktop_;
};

INSTANTIATE_TYPED_TEST_SUITE_P(Scripted, AccessibilityContractTest, ScriptedContractFixture);

} // namespace
} // namespace vardel::testing

#pragma once

#include "platform/Accessibility.h"
#include "platform/Geometry.h"
#include "platform/linux/AtspiCallGuard.h"
#include "platform/linux/AtspiElement.h"
#include "platform/linux/AtspiErrors.h"
#include "platform/linux/AtspiSampleAnswers.h"
#include "platform/linux/GLibHandles.h"

#include <atspi/atspi.h>
#include <map>
#include <optional>
#include <string>
#include <type_traits>
#include <vector>

namespace vardel::linux_desktop {

// The libatspi calls one request of the logic makes. Every call goes through the guard, so that a
// frozen application is not asked; error() is the error of the last call that failed (noValue while
// none has), for the request to report. With the sample's answers, a question already answered in
// the sample is not asked again; failed calls are not remembered.
class AtspiCalls {
public:
    explicit AtspiCalls(AtspiCallGuard& guard, AtspiSampleAnswers* answers = nullptr)
        : guard_(guard)
        , answers_(answers)
    {
    }

    AXError error() const { return error_; }
    void setError(AXError error) { error_ = error; }

    // Runs one libatspi call on the accessible's application and gives what it returns, or fallback
    // when the application is frozen. What the call hands over is the caller's to own.
    template<typename Result, typename Call> Result run(AtspiAccessible* accessible, Result fallback, Call call)
    {
        std::string busName = AtspiElement::applicationBusName(accessible);
        auto started = AtspiCallGuard::Clock::now();
        lastCallFailed_ = true;
        if (!guard_.admit(busName, started)) {
            error_ = AXErrorCode::cannotComplete;
            ++failures_;
            return fallback;
        }
        GError* reported = nullptr;
        Result result = call(&reported);
        GErrorHandle failure(reported);
        lastCallFailed_ = failure != nullptr;
        if (failure)
            error_ = axErrorFor(*failure);
        bool timedOut = guard_.finish(busName, started, AtspiCallGuard::Clock::now());
        if (timedOut)
            error_ = AXErrorCode::cannotComplete;
        failures_ += lastCallFailed_ || timedOut ? 1 : 0;
        return result;
    }

    // Whether the accessible has an interface, asked with its getter (atspi_accessible_get_*_iface).
    template<auto getInterface> static bool implements(AtspiAccessible* accessible)
    {
        using Interface = std::remove_pointer_t<decltype(getInterface(accessible))>;
        return GObjectHandle<Interface>(getInterface(accessible)) != nullptr;
    }

    std::optional<int> role(AtspiAccessible*);
    std::optional<std::string> name(AtspiAccessible*);
    std::optional<std::string> description(AtspiAccessible*);
    // The toolkit's identifier; nothing when it is empty.
    std::optional<std::string> identifier(AtspiAccessible*);
    bool hasState(AtspiAccessible*, AtspiStateType);
    std::optional<AXUIElement> parent(AtspiAccessible*);
    int childCount(AtspiAccessible*);
    std::vector<AXUIElement> children(AtspiAccessible*);
    // An application's children with a window role.
    std::vector<AXUIElement> windowsOf(AtspiAccessible* application);
    std::map<std::string, std::string> objectAttributes(AtspiAccessible*);
    std::optional<std::string> objectAttribute(AtspiAccessible*, const char* key);
    // In screen coordinates; nothing for objects that are not laid out.
    std::optional<Rect> extents(AtspiAccessible*);
    // A document's address, from its document attributes.
    std::optional<std::string> documentAddress(AtspiAccessible*);
    std::optional<std::string> linkAddress(AtspiAccessible*);
    std::optional<std::string> textContent(AtspiAccessible*);
    std::optional<double> numericValue(AtspiAccessible*);
    std::optional<ProcessIdentifier> processId(AtspiAccessible*);
    // The first `count` web documents below the element that are showing, outermost first.
    std::vector<AXUIElement> showingWebDocuments(AtspiAccessible*, int count);
    // Nothing when the element has no selection.
    std::optional<std::vector<AXUIElement>> selectedChildren(AtspiAccessible*);
    // The child the point lies in, in screen coordinates.
    GObjectHandle<AtspiAccessible> accessibleAtPoint(AtspiAccessible*, int x, int y);

    // The AT-SPI action names of the element, in its order.
    std::vector<std::string> actionNames(AtspiAccessible*);
    std::optional<std::string> actionDescription(AtspiAccessible*, int index);
    bool doAction(AtspiAccessible*, int index);

    // Writes: success, attributeUnsupported when the element lacks the interface, else the error.
    AXError grabFocus(AtspiAccessible*);
    AXError setNumericValue(AtspiAccessible*, double);
    AXError setTextContents(AtspiAccessible*, const std::string&);

private:
    // The sample's answer in the slot, else what ask() answers, remembered unless a call failed.
    template<typename Answer, typename Ask>
    Answer remembered(AtspiAccessible* accessible, std::optional<Answer> AtspiSampleAnswers::Answers::*slot, Ask ask)
    {
        if (!answers_)
            return ask();
        auto& known = answers_->about(accessible, AtspiSampleAnswers::Clock::now()).*slot;
        if (known)
            return *known;
        uint64_t failuresBefore = failures_;
        Answer answer = ask();
        if (failures_ == failuresBefore)
            answers_->about(accessible, AtspiSampleAnswers::Clock::now()).*slot = answer;
        return answer;
    }
    uint64_t states(AtspiAccessible*);
    std::optional<std::vector<AXUIElement>> childrenInOneCall(AtspiAccessible*);
    std::vector<AXUIElement> childrenOneByOne(AtspiAccessible*);
    AXError outcome(gboolean done) const { return done ? AXErrorCode::success : error_; }

    AtspiCallGuard& guard_;
    AtspiSampleAnswers* answers_;
    AXError error_ = AXErrorCode::noValue;
    bool lastCallFailed_ = false;
    uint64_t failures_ = 0;
};

} // namespace vardel::linux_desktop

#include "platform/ProcessWide.h"

#include <algorithm>
#include <vector>

namespace vardel {

namespace {
std::vector<ProcessWideState*>& registeredStates()
{
    static std::vector<ProcessWideState*> states;
    return states;
}
} // namespace

ProcessWideState::ProcessWideState()
{
    registeredStates().push_back(this);
}

ProcessWideState::~ProcessWideState()
{
    std::erase(registeredStates(), this);
}

void ProcessWideState::resetAll()
{
    for (ProcessWideState* state : registeredStates())
        state->reset();
}

} // namespace vardel

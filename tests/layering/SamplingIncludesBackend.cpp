// Compiled as part of the sampling layer, this include must not be found: backends are out of reach
// of the logic.
#include "platform/scripted/ScriptedDesktop.h"

#pragma once

namespace vardel {

// The table of every extractor and the applications it serves, with the default extractor for the
// rest. The executable installs it into the sampler's registry at start-up.
class BuiltInExtractors {
public:
    static void install();
};

} // namespace vardel

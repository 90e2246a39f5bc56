#pragma once
// Ctrl-C while something is made that is not to be left half.

namespace kvproject {

/// While this lives, an interruption and a request to end are noted, and do not end the program.
class Interruption {
public:
    Interruption();
    ~Interruption();
    Interruption(const Interruption&) = delete;
    Interruption& operator=(const Interruption&) = delete;

    static bool Asked();
    /// What a program ends with that is ended by such a signal.
    static int ExitCode();
};

} // namespace kvproject

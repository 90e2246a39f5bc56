#pragma once
// How a command fails: a message for the person, and the exit code of the program.

#include "platform/com/BaseTypes.h"

#include <stdexcept>
#include <string>
#include <string_view>

namespace kvproject {

/// Ends the command with a message.
class Failure : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// The exit code where something is wrong.
inline constexpr int kFault = 1;

/// Tells what a command failed with on standard error.
void TellFailure(std::string_view message);

/// What a result code says, with its number: "the object is locked (0xC201004E)".
std::string Describe(HRESULT result);
/// The same where the place tells more than the code does.
std::string Describe(HRESULT result, std::string_view meaning);

/// Throws a Failure that names what was tried, unless it succeeded.
void Require(HRESULT result, std::string_view what);

} // namespace kvproject

#pragma once
// Type infos as text, and their records, which are given back when they go. Whatever cannot be read throws Failure.

#include "platform/automation/TypeInfo.h"
#include "platform/com/ComPtr.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace kvproject {

template <class Record>
using Owned = std::unique_ptr<Record, std::function<void(Record*)>>;

Owned<TYPEATTR> AttributesOf(ITypeInfo& info);
Owned<FUNCDESC> FunctionOf(ITypeInfo& info, WORD index);
/// An enumerator, or a field of a record.
Owned<VARDESC> VariableOf(ITypeInfo& info, WORD index);

std::string NameOf(ITypeInfo& info);
/// The name of a member, then those of its parameters.
std::vector<std::string> MemberNames(ITypeInfo& info, DISPID member);

} // namespace kvproject

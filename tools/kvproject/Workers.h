#pragma once
// The same work on many files, several at a time. Each is done in a process of its own kind: what loading shares in a
// process, such as its undo manager and the reports of errors, stays out of the way, and a file that brings its process
// down costs no other.

#include <functional>
#include <ostream>
#include <string>
#include <vector>

namespace kvproject {

/// Prints what is to be said of a file and returns an exit code. May throw Failure.
using FileWork = std::function<int(const std::string& file, std::ostream& out)>;

/// Does the work on each file, as many at a time as there are processors, and prints what it says in the order of the
/// files. A failure is told in its turn, and the others are done all the same. Returns the highest exit code. One file
/// alone is worked on in this process, and its Failure is thrown. Called while the process has one thread.
int ForEachFile(const std::vector<std::string>& files, const FileWork& work);

} // namespace kvproject

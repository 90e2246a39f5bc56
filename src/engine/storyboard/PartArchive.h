#pragma once
// The parts of a production on the way into a document, or out of it.

#include "KVProjectData/Engine/Persist.h"
#include "engine/storyboard/Leftovers.h"
#include "engine/storyboard/StoredDocument.h"
#include "platform/automation/Bstr.h"
#include "platform/com/Error.h"

#include <functional>
#include <optional>

namespace kv {

/// An element with attributes and parts below it. Reading and writing run the same list of what it holds, so that they
/// cannot differ. What stands as it was at first is not written, and what is not there is not read. Reading throws
/// Error(ZXE_E_NOT_PRODUCTION) for what is no such value.
class PartArchive {
public:
    using List = std::function<void(PartArchive&)>;

    virtual bool IsReading() const = 0;

    /// A field that a new owner has a value for.
    template <class Owner, class T>
    void Value(const char* name, Owner& owner, T Owner::*field)
    {
        static const Owner initial{};
        Transfer(name, owner.*field, &(initial.*field));
    }

    /// A field that is always there.
    void Always(const char* name, LONG& value) { Transfer(name, value, nullptr); }

    /// A path or a moniker that is not empty; null for none.
    virtual void Path(const char* name, Bstr& path) = 0;

    /// An element of that name, which is there when there is something in it.
    virtual void Part(const char* name, const List& list) = 0;
    /// An element of that name which holds the document.
    virtual void Document(const char* name, StoredDocument& document) = 0;

    /// What has to be so.
    static void Require(bool condition)
    {
        if (!condition) throw Error(ZXE_E_NOT_PRODUCTION);
    }

protected:
    ~PartArchive() = default;

    /// Without an initial value it has to be there.
    virtual void Transfer(const char* name, LONG& value, const LONG* initial) = 0;
    /// "1" or "0".
    virtual void Transfer(const char* name, bool& value, const bool* initial) = 0;
    /// Finite and not negative.
    virtual void Transfer(const char* name, double& value, const double* initial) = 0;
};

} // namespace kv

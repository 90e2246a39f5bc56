#pragma once
// Qt's property system and queued signals: what ours are measured against.

#include <cstddef>
#include <memory>
#include <string_view>

namespace kv::bench {

/// An object with a property whose change is told by a queued signal to a receiver on a thread of its own.
class QtYardstick {
public:
    QtYardstick();
    ~QtYardstick();

    /// Sets the property by name, `count` times, to new values.
    void SetProperty(std::size_t count);
    /// Waits until the receiver heard of every change so far.
    void WaitForAll();

private:
    class Parts;
    std::unique_ptr<Parts> m_parts;
};

/// An undo stack of described commands that keep a text from before and one from after.
class QtUndoStack {
public:
    QtUndoStack();
    ~QtUndoStack();

    void Push(std::u16string_view text);
    void Undo();
    void Redo();
    void Clear();

private:
    class Parts;

    std::unique_ptr<Parts> m_parts;
};

} // namespace kv::bench

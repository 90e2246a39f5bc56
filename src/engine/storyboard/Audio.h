#pragma once
// A background audio of a production.

#include "engine/storyboard/Faces.h"

namespace kv {

class CAudio final : public Object<Item, SubObjectFace, AudioPropsFace, SourceFace, ISmartAudio> {
public:
    CAudio(std::shared_ptr<Storyboard> board, LONG id, ItemState state, Leftovers rest = {});

    HRESULT get_Moniker(BSTR* pbstrMoniker) override { return get_FileName(pbstrMoniker); }

    LONG Enter(BoardContents& contents, LONG index) override;
    LONG Where(const BoardContents& contents) const override;
    void Leave(BoardContents& contents) override;
    Span Time() const override;
    void TellPlaced(ProductionSinks& sinks, LONG where, bool added) const override;
    void TellChanged(ProductionSinks& sinks, LONG where, Origin origin) const override;

protected:
    /// ISourceFile or ISmartAudio, never both.
    HRESULT FindInterface(REFIID iid, void** out) override;

private:
    Item& Self() override { return *this; }
    bool TakesMonikers() const override { return false; }

    const bool m_isFile;
};

} // namespace kv

#pragma once
// A panel of a production: a picture or a clip in the row that plays.

#include "engine/storyboard/Faces.h"

namespace kv {

class CPanel final : public Object<Item, SourceFace, IBaseObject, NativeInfoFace> {
public:
    CPanel(std::shared_ptr<Storyboard> board, LONG id, ItemState state, Leftovers rest = {});

    HRESULT get_Duration(double* pdSeconds) override;
    HRESULT put_Duration(double dSeconds) override;

    LONG Enter(BoardContents& contents, LONG index) override;
    LONG Where(const BoardContents& contents) const override;
    void Leave(BoardContents& contents) override;
    double Plays(const ItemState& state) const override;
    Span Time() const override;
    void TellPlaced(ProductionSinks& sinks, LONG where, bool added) const override;
    void TellChanged(ProductionSinks& sinks, LONG where, Origin origin) const override;

private:
    Item& Self() override { return *this; }
    NativeAudio& Part() override { return m_audio; }

    NativeAudio m_audio{*this};
};

} // namespace kv

#pragma once
// What stands for the first panel of a production without panels: how long it lasts.

#include "KVProjectData/Engine/Sources.h"
#include "engine/storyboard/Storyboard.h"

namespace kv {

class CBlankPanel final : public Object<IBaseObject> {
public:
    explicit CBlankPanel(std::shared_ptr<Storyboard> board) : m_board(std::move(board)) {}

    HRESULT get_Duration(double* pdSeconds) override { return Give(m_board->GetSettings().blankDuration, pdSeconds); }
    HRESULT put_Duration(double dSeconds) override
    {
        if (!IsAmount(dSeconds) || dSeconds == 0.0) return E_INVALIDARG;
        return m_board->IsOpen() ? m_board->PutSetting(&Settings::blankDuration, dSeconds) : ZXE_E_NOT_OPEN;
    }

private:
    const std::shared_ptr<Storyboard> m_board;
};

} // namespace kv

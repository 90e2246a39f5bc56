#pragma once
// What is asked of the production object of a storyboard.

#include "KVProjectData/Engine/Production.h"
#include "SbdUtils/EngineCalls.h"

#include <cmath>

namespace kv {

/// The frames of a production. Times are seconds.
class FrameClock {
public:
    /// A rate that tells nothing stands for 29.97 frames per second.
    explicit FrameClock(double framesPerSecond) : m_period(1.0 / (framesPerSecond > 0.0 ? framesPerSecond : kUsualRate))
    {
    }

    /// The middle of the frame that holds a time.
    double FrameMid(double seconds) const { return std::floor(seconds / m_period) * m_period + m_period / 2; }

    /// The middle of the last frame that is whole in a length.
    double LastFrameMid(double length) const { return (std::trunc(length / m_period) - 1) * m_period + m_period / 2; }

private:
    static constexpr double kUsualRate = 29.97;

    double m_period;
};

/// The production object of a storyboard. Failures are reported as the caller's, and thrown as Error.
class ProductionObject {
public:
    ProductionObject(const EngineCalls& engine, IZXEProductionData& storyboard) : m_engine(engine)
    {
        m_engine.Need(storyboard.GetProductionObj(m_object.Put()), "spSbd->GetProductionObj(&spUnkProdObj)");
    }

    IUnknown* Get() const { return m_object.Get(); }

    ComPtr<IProductionInfo> Info() const
    {
        return m_engine.Need<IProductionInfo>(m_object.Get(), "(IProductionInfo*)spProdInfo");
    }

    ComPtr<IProductionObjects> Objects() const
    {
        return m_engine.Need<IProductionObjects>(m_object.Get(), "(IProductionObjects*)spProdObjects");
    }

    FrameClock Clock() const
    {
        double dFrameRate = 0.0;
        m_engine.Need(Info()->get_EditingFrameRate(&dFrameRate), "spProdInfo->get_EditingFrameRate(&dFrameRate)");
        return FrameClock(dFrameRate);
    }

    double Duration() const
    {
        double dDuration = 0.0;
        m_engine.Need(Info()->get_Duration(&dDuration), "spProdInfo->get_Duration(&dDuration)");
        return dDuration;
    }

private:
    EngineCalls m_engine;
    ComPtr<IUnknown> m_object;
};

} // namespace kv

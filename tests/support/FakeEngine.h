#pragma once
// An engine whose calls fail at will: one object that is storyboard, production, panel, effect, source and sound at
// once, for what a real engine does not do.

#include "KVProjectData/Engine.h"
#include "platform/com/ConnectionPoint.h"
#include "platform/com/Object.h"
#include "platform/system/ErrorReporter.h"
#include "support/Productions.h"

#include <map>
#include <set>
#include <string>
#include <vector>

namespace kv::test {

class FakeEngine final
    : public Object<BareProduction, IEditData, IProductionInfo, IProductionObjects, IEffectInfo, ISubObject,
                    IParentProduction, ISourceFile, IBaseObject, INativeInfo, ISmartAudio, IAudioProps> {
public:
    /// The results of methods, by name; of all others S_OK.
    std::map<std::string, HRESULT> results;
    /// Interfaces that it does not answer for.
    std::set<std::string> lacks;
    /// What all numbers are.
    double number = 25.0;
    /// Answers for its connection points; null for none.
    ComPtr<IUnknown> connections;

    HRESULT Initialise() override { return Of("Initialise"); }
    HRESULT GetProductionObj(IUnknown** out) override { return Self("GetProductionObj", out); }
    HRESULT GetPanelCount(LONG* out) override { return Set("GetPanelCount", 1, out); }
    HRESULT GetPanelBaseObject(LONG, IUnknown** out) override { return Self("GetPanelBaseObject", out); }
    HRESULT DeletePanel(LONG) override { return Of("DeletePanel"); }
    HRESULT put_UseSourceAspectRatio(VARIANT_BOOL) override { return Of("put_UseSourceAspectRatio"); }

    HRESULT AddSourceFile(LONG, BSTR, double, double, LONG, IUnknown** out) override
    {
        return Self("AddSourceFile", out);
    }
    HRESULT AddProductionEffect(LONG, LONG, IXMLDOMNode*, BSTR, LONG, double, IUnknown** out) override
    {
        return Self("AddProductionEffect", out);
    }
    HRESULT DeleteProductionEffect(LONG, LONG) override { return Of("DeleteProductionEffect"); }
    HRESULT AddProductionAudio(BSTR, LONG, double, IUnknown**) override { return Of("AddProductionAudio"); }
    HRESULT DeleteProductionAudio(LONG) override { return Of("DeleteProductionAudio"); }

    HRESULT get_Duration(double* out) override { return Set("get_Duration", number, out); }
    HRESULT get_EditingFrameRate(double* out) override { return Set("get_EditingFrameRate", number, out); }
    HRESULT get_AspectRatio(double* out) override { return Set("get_AspectRatio", number, out); }
    HRESULT put_AspectRatio(double) override { return Of("put_AspectRatio"); }
    HRESULT get_Stereoscopic(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT put_Stereoscopic(VARIANT_BOOL) override { return E_NOTIMPL; }
    HRESULT GetEffect(LONG, double, IUnknown** out) override { return Self("GetEffect", out); }
    HRESULT GetObject(LONG, LONG index, IUnknown** out) override
    {
        return index == 0 ? Self("GetObject", out) : S_FALSE;
    }

    HRESULT get_EffectID(LONG* out) override { return Set("get_EffectID", 1, out); }
    HRESULT get_Layer(LONG* out) override { return Set("get_Layer", 1, out); }
    HRESULT get_Type(LONG*) override { return E_NOTIMPL; }
    HRESULT get_Kind(LONG*) override { return E_NOTIMPL; }
    HRESULT get_GroupID(LONG*) override { return E_NOTIMPL; }
    HRESULT SetGroupID(LONG) override { return Of("SetGroupID"); }
    HRESULT get_MaskFile(BSTR*) override { return E_NOTIMPL; }
    HRESULT SetMaskFile(BSTR, LONG) override { return Of("SetMaskFile"); }
    HRESULT GetSourceObject(IUnknown** out) override { return Self("GetSourceObject", out); }
    HRESULT GetParameterDocument(IXMLDOMNode** out) override
    {
        const HRESULT result = Of("GetParameterDocument");
        return result == S_OK ? document.CopyTo(out) : result;
    }
    HRESULT SetParameterDocument(IXMLDOMNode* pDocument, VARIANT_BOOL bRefresh) override
    {
        pushes.push_back(bRefresh);
        document = pDocument;
        return Of("SetParameterDocument");
    }
    ComPtr<IXMLDOMNode> document;
    std::vector<VARIANT_BOOL> pushes;

    HRESULT get_ID(LONG* out) override { return Set("get_ID", 1, out); }
    HRESULT get_StartOffset(double* out) override { return Set("get_StartOffset", number, out); }
    HRESULT put_StartOffset(double) override { return Of("put_StartOffset"); }
    HRESULT get_EndOffset(double* out) override { return Set("get_EndOffset", number, out); }
    HRESULT put_EndOffset(double) override { return Of("put_EndOffset"); }
    HRESULT get_Mute(VARIANT_BOOL* out) override { return Set("get_Mute", VARIANT_BOOL{1}, out); }
    HRESULT put_Mute(VARIANT_BOOL) override { return Of("put_Mute"); }
    HRESULT get_ParentProduction(IUnknown** out) override { return Self("get_ParentProduction", out); }

    HRESULT get_FileName(BSTR*) override { return Of("get_FileName"); }
    HRESULT put_FileName(BSTR) override { return Of("put_FileName"); }
    HRESULT get_InPoint(double* out) override { return Set("get_InPoint", number, out); }
    HRESULT put_InPoint(double) override { return Of("put_InPoint"); }
    HRESULT get_OutPoint(double* out) override { return Set("get_OutPoint", number, out); }
    HRESULT put_OutPoint(double) override { return Of("put_OutPoint"); }
    HRESULT get_Length(double* out) override { return Set("get_Length", number, out); }
    HRESULT get_Repeat(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT put_Repeat(VARIANT_BOOL) override { return Of("put_Repeat"); }
    HRESULT get_Rotation(LONG* out) override { return Set("get_Rotation", 1, out); }
    HRESULT put_Rotation(LONG) override { return Of("put_Rotation"); }
    HRESULT GetPanZoom(IXMLDOMNode** out) override
    {
        *out = nullptr;
        return Of("GetPanZoom");
    }
    HRESULT SetPanZoom(IXMLDOMNode*) override { return Of("SetPanZoom"); }
    HRESULT put_Duration(double) override { return Of("put_Duration"); }
    HRESULT GetNativeAudio(IUnknown** out) override { return Self("GetNativeAudio", out); }
    HRESULT get_UseNativeAudio(VARIANT_BOOL*) override { return E_NOTIMPL; }
    HRESULT put_UseNativeAudio(VARIANT_BOOL) override { return Of("put_UseNativeAudio"); }

    HRESULT get_Moniker(BSTR*) override { return Of("get_Moniker"); }
    HRESULT get_Level(double* out) override { return Set("get_Level", number, out); }
    HRESULT put_Level(double) override { return Of("put_Level"); }
    HRESULT get_FadeIn(double* out) override { return Set("get_FadeIn", number, out); }
    HRESULT put_FadeIn(double) override { return Of("put_FadeIn"); }
    HRESULT get_FadeOut(double*) override { return E_NOTIMPL; }
    HRESULT put_FadeOut(double) override { return Of("put_FadeOut"); }
    HRESULT get_FadeInGain(double*) override { return E_NOTIMPL; }
    HRESULT put_FadeInGain(double) override { return Of("put_FadeInGain"); }
    HRESULT get_FadeOutGain(double*) override { return E_NOTIMPL; }
    HRESULT put_FadeOutGain(double) override { return Of("put_FadeOutGain"); }

protected:
    HRESULT FindInterface(REFIID iid, void** out) override
    {
        const bool hidden =
            (Lacks<IZXEProductionData>("IZXEProductionData", iid) || Lacks<IEditData>("IEditData", iid) ||
             Lacks<IProductionInfo>("IProductionInfo", iid) || Lacks<ISubObject>("ISubObject", iid) ||
             Lacks<ISourceFile>("ISourceFile", iid) || Lacks<IBaseObject>("IBaseObject", iid) ||
             Lacks<ISmartAudio>("ISmartAudio", iid) || Lacks<IAudioProps>("IAudioProps", iid) ||
             Lacks<INativeInfo>("INativeInfo", iid) || Lacks<IParentProduction>("IParentProduction", iid));
        if (connections && iid == IConnectionPointContainer::IID) return connections->QueryInterface(iid, out);
        return hidden ? E_NOINTERFACE : Object::FindInterface(iid, out);
    }

private:
    template <class Interface>
    bool Lacks(const char* name, REFIID iid) const
    {
        return iid == Interface::IID && lacks.contains(name);
    }

    HRESULT Of(const std::string& method) const
    {
        const auto found = results.find(method);
        return found == results.end() ? S_OK : found->second;
    }

    template <class T>
    HRESULT Set(const char* method, T value, T* out) const
    {
        *out = value;
        return Of(method);
    }

    HRESULT Self(const char* method, IUnknown** out)
    {
        const HRESULT result = Of(method);
        *out = result == S_OK ? ComPtr<IUnknown>(Controlling()).Detach() : nullptr;
        return result;
    }
};

/// The lines on the error stack, each without its place in the sources: what follows "*** Error ". Those of another
/// source than expected stay as they are.
inline std::vector<std::string> Reported(const std::string& source)
{
    std::vector<std::string> lines = ZXUErrorStack();
    for (std::string& line : lines) {
        const auto at = line.find("): *** Error ");
        if (line.starts_with(source + "(") && at != line.npos && line.back() == '\n')
            line = line.substr(at + 13, line.size() - at - 14);
    }
    return lines;
}

/// The same for calls that failed with one result: their texts, joined; "plain" for one that has none.
inline std::string CallsReported(const std::string& source, HRESULT result)
{
    std::string calls;
    for (const std::string& line : Reported(source)) {
        const std::string prefix = ResultText(result) + " = ";
        const std::string call = line == ResultText(result) ? "plain" : line;
        calls += (calls.empty() ? "" : "; ") + (call.starts_with(prefix) ? call.substr(prefix.size()) : call);
    }
    return calls;
}

} // namespace kv::test

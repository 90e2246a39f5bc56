#pragma once
// Productions in a document.

#include "platform/automation/Bstr.h"
#include "platform/com/Unknown.h"
#include "platform/xml/Dom.h"

#include <string_view>

/// How the files of a production are written in a document. The caller of IZXEProductionPersist implements it.
struct IZXEContentPaths : IUnknown {
    static constexpr GUID IID = "f5d50a51-fb61-42b5-85be-4e6d16bcb52f"_guid;
    using Base = IUnknown;

    /// From a path to what stands in the document, and back. Monikers are not asked for. The caller frees the string. A
    /// failure ends the save or load with its result.
    virtual HRESULT ToDocument(BSTR bstrPath, BSTR* pbstrText) = 0;
    virtual HRESULT FromDocument(BSTR bstrText, BSTR* pbstrPath) = 0;
};

/// A production in a document. An element that holds one:
///
///     <… aspectRatio="1.7777777777777777" stereoscopic="1" useSourceAspectRatio="1">
///       <Panel source="%CONTENT%\sea.mpg" in="1" out="5" repeat="1" rotation="90" useNativeAudio="0" …>
///         <Sound level="0.5" mute="1" fadeIn="3" fadeOut="3" fadeInGain="0.9" fadeOutGain="0.9"/>
///         <PanZoom><ZXFPanZoom>…</ZXFPanZoom></PanZoom>
///       </Panel>
///       <Effect layer="12" type="2" start="0.02" end="5" group="4" mask="…" source="…" …>
///         <Sound …/> <PanZoom>…</PanZoom> <Mask in="1" …> <PanZoom>…</PanZoom> </Mask>
///         <Parameters><effect>…</effect></Parameters>
///       </Effect>
///       <Audio source="title:3" kind="1" start="0" end="5"> <Sound …/> </Audio>
///     </…>
///
/// What is as it was at first is left out, but for "source" of panels and audio, "layer", "type" and "kind", without
/// which nothing is read. Numbers are decimal, truths "1" and "0". Beside a source stands what was found in it
/// ("length", "frameRate", "sourceAspect"), which counts while the file cannot be read. Effects stand in the order of
/// layer, start and age, all else in its own order. Attributes, elements and texts of other names are kept, and written
/// after ours.
struct IZXEProductionPersist : IUnknown {
    static constexpr GUID IID = "ddc8ff33-2ab8-43bb-9cf9-17419dbe631f"_guid;
    using Base = IUnknown;

    /// Writes the production into an element without content, at any time. `pPaths` may be null: then paths stand as
    /// they are. Looks into sources of which nothing is known yet. E_POINTER for no element, E_INVALIDARG for one that
    /// holds something already, for text that XML cannot hold and for a place too deep in its document; then the
    /// element is as it was.
    virtual HRESULT Save(IXMLDOMElement* pElement, IZXEContentPaths* pPaths) = 0;

    /// Replaces the production by what stands in an element, which is only read. Opens no media. Of its undo history
    /// nothing is left, and it counts as not modified; the sinks are told OnPanelsReset, OnSettingsChanged,
    /// OnDurationChanged, of the modified and the undo state where that was another one, and OnEffectsInvalidated. What
    /// it held before can only be read from now on. ZXE_E_NOT_OPEN while the production is not in use,
    /// ZXE_E_UNDO_BLOCK_OPEN while a block is open, ZXE_E_NOT_PRODUCTION for an element of which a part cannot be read;
    /// then the production is as it was.
    virtual HRESULT Load(IXMLDOMElement* pElement, IZXEContentPaths* pPaths) = 0;
};

/// Takes markup.
class ZXEMarkupTarget {
public:
    /// UTF-8, borrowed for the call.
    virtual void Take(std::string_view markup) = 0;

protected:
    ~ZXEMarkupTarget() = default;
};

/// A production as markup, without a tree of it, which takes several times as much. Whoever saves many productions asks
/// for it first; one that does not offer it is saved by IZXEProductionPersist.
struct IZXEProductionMarkup : IUnknown {
    static constexpr GUID IID = "3f0c6d1a-2c5e-4b57-9c49-87f2f1b0a6d4"_guid;
    using Base = IUnknown;

    /// What Save makes of an element, as markup: the element in one line, with nothing but what it holds between its
    /// tags. The element itself gives its name, and stays as it is. The target is called once, unless the call fails.
    virtual HRESULT SaveMarkup(IXMLDOMElement* pElement, IZXEContentPaths* pPaths, ZXEMarkupTarget* pTarget) = 0;
};

/// The element holds an attribute or an element of ours that is no such value.
inline constexpr HRESULT ZXE_E_NOT_PRODUCTION = MakeResult(0xC2000019);

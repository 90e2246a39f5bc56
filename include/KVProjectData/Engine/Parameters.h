#pragma once
// What the effects of the engine read of a parameter document's "plugin_data": the transform, the crop of the source,
// and typed, named parameters.
//
// The objects live on the stack of their user, for one operation: QueryInterface, AddRef and Release answer E_NOTIMPL,
// and nobody keeps them. Times are finite numbers. Strings and values handed out are the caller's to free. A null
// out-pointer is E_POINTER; on other failures the out-pointers of the call are set to null or 0.

#include "KVProjectData/Geometry.h"
#include "platform/automation/Variant.h"

// The channels of a transform.

inline constexpr ULONG ZXP_TRANSLATION = 0x000F;
/// Degrees; the angle in the picture's plane is z.
inline constexpr ULONG ZXP_ROTATION = 0x00F0;
/// Half the width, half the height, 1.
inline constexpr ULONG ZXP_SCALING = 0x0F00;
/// One whole number, which passes as x; y and z are 0.
inline constexpr ULONG ZXP_OPACITY = 0x3000;
/// The point of a text that its position tells, from -1 to 1.
inline constexpr ULONG ZXP_HANDLES = 0x70000;
inline constexpr ULONG ZXP_ALL_CHANNELS = 0x73FFF;

// The lists of key frames that each key-framed value has. Two keys of one list never share a time.

/// Times are seconds from the effect's start,
inline constexpr ULONG ZXP_FROM_START = 1;
/// seconds from its end,
inline constexpr ULONG ZXP_FROM_END = 2;
/// percent of its span.
inline constexpr ULONG ZXP_PERCENT = 4;

/// Caps of a key all of whose components may be edited.
inline constexpr ULONG ZXP_ALL_CAPS = 0x70FFF;

struct ZXPVector {
    float x;
    float y;
    float z;

    friend bool operator==(const ZXPVector&, const ZXPVector&) = default;
};

/// What corner handles refer to.
struct ZXPReferenceFrame {
    ULONG ulWidth;
    ULONG ulHeight;
    double dFrameRate;
    double dAspectRatio;
};

/// The size and place of an effect over time. A channel or a list that is none of the above is E_INVALIDARG, and so is
/// a number that is not finite; TYPE_E_ELEMENTNOTFOUND tells that there is no key at exactly that time.
struct IZXPTransform : IUnknown {
    static constexpr GUID IID = "127697c9-2bfb-4164-9782-1a598d607eba"_guid;
    using Base = IUnknown;

    /// Adds a key, or overwrites the one at exactly that time.
    virtual HRESULT SetKeyValue(ULONG ulChannel, double dTime, ULONG ulList, float x, float y, float z,
                                ULONG ulCaps) = 0;
    virtual HRESULT GetKeyValue(ULONG ulChannel, double dTime, ULONG ulList, float* px, float* py, float* pz,
                                ULONG* pulCaps) = 0;

    /// Keys count from 0 in the order of their times. E_INVALIDARG for an index that is none.
    virtual HRESULT GetKeyCount(ULONG ulChannel, ULONG ulList, ULONG* pulCount) = 0;
    virtual HRESULT GetKeyTime(ULONG ulChannel, ULONG ulList, ULONG ulIndex, double* pdTime) = 0;

    /// Files a key at another time, in the place of the key that is there. Nothing happens below a millisecond.
    virtual HRESULT MoveKey(ULONG ulChannel, ULONG ulList, double dFrom, double dTo) = 0;
    virtual HRESULT DeleteKey(ULONG ulChannel, ULONG ulList, double dTime) = 0;

    /// Empties the lists of a channel, or with ZXP_ALL_CHANNELS of all.
    virtual HRESULT ClearChannels(ULONG ulChannels) = 0;

    /// Adds to the times of all keys of all channels. E_INVALIDARG, and nothing has changed, when the times of two keys
    /// of a list would become one.
    virtual HRESULT ShiftKeys(double dOffset) = 0;

    /// By list; any other value means ZXP_PERCENT.
    virtual HRESULT get_PathID(ULONG ulList, ULONG* pVal) = 0;
    virtual HRESULT put_PathID(ULONG ulList, ULONG newVal) = 0;
    virtual HRESULT get_Speed(double* pVal) = 0;
    virtual HRESULT put_Speed(double newVal) = 0;

    virtual HRESULT GetDelta(ULONG ulChannel, float* px, float* py, float* pz) = 0;
    virtual HRESULT SetDelta(ULONG ulChannel, float x, float y, float z) = 0;

    /// Any value but 0 is true.
    virtual HRESULT get_IsSelectable(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_IsSelectable(VARIANT_BOOL newVal) = 0;
    virtual HRESULT get_IsEditable(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_IsEditable(VARIANT_BOOL newVal) = 0;
    virtual HRESULT get_Caps(ULONG* pVal) = 0;
    virtual HRESULT put_Caps(ULONG newVal) = 0;

    // What no document holds.

    /// Set while an editor works on the effect.
    virtual HRESULT get_IsLocked(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_IsLocked(VARIANT_BOOL newVal) = 0;
    virtual HRESULT get_MaxOpacity(ULONG* pVal) = 0;
    virtual HRESULT put_MaxOpacity(ULONG newVal) = 0;
    virtual HRESULT put_FirstHandle(FloatPoint newVal) = 0;
    virtual HRESULT put_ReferenceFrame(ZXPReferenceFrame newVal) = 0;

    /// The corners of the effect's own square, four points with z = 0: the first handle, and its mirror images below,
    /// across, and beside.
    virtual HRESULT GetHandles(ZXPVector* pHandles, ZXPReferenceFrame* pReference) = 0;

    /// Takes over what an element holds; what it does not hold takes its default. On failure nothing has changed:
    /// DISP_E_TYPEMISMATCH for a text where a number belongs, E_INVALIDARG for a node that is no element.
    virtual HRESULT Load(IUnknown* pNode) = 0;
    virtual HRESULT Save(IUnknown* pNode) = 0;
};

/// The part of its source that an effect shows. Lists, keys and results as those of IZXPTransform.
struct IZXPCropSource : IUnknown {
    static constexpr GUID IID = "6899be1c-4693-4daf-83d2-3af9dbcf9fae"_guid;
    using Base = IUnknown;

    virtual HRESULT get_EditMode(ULONG* pVal) = 0;
    virtual HRESULT put_EditMode(ULONG newVal) = 0;
    virtual HRESULT get_PresetID(ULONG* pVal) = 0;
    virtual HRESULT put_PresetID(ULONG newVal) = 0;
    /// Any value but 0 is true.
    virtual HRESULT get_CropMode(VARIANT_BOOL* pVal) = 0;
    virtual HRESULT put_CropMode(VARIANT_BOOL newVal) = 0;

    /// The rectangle of the key at the effect's start.
    virtual HRESULT put_CropRect(FloatRect newVal) = 0;

    virtual HRESULT SetKeyRect(double dTime, ULONG ulList, FloatRect rect, ULONG ulCaps) = 0;
    virtual HRESULT GetKeyRect(double dTime, ULONG ulList, FloatRect* pRect, ULONG* pulCaps) = 0;
    virtual HRESULT GetKeyCount(ULONG ulList, ULONG* pulCount) = 0;
    virtual HRESULT GetKeyTime(ULONG ulList, ULONG ulIndex, double* pdTime) = 0;
    virtual HRESULT MoveKey(ULONG ulList, double dFrom, double dTo) = 0;
    virtual HRESULT DeleteKey(ULONG ulList, double dTime) = 0;
    virtual HRESULT ClearKeys() = 0;
    virtual HRESULT ShiftKeys(double dOffset) = 0;

    /// The frame of the source in pixels, and its length in frames. No document holds them.
    virtual HRESULT GetSourceFrame(LONG* plWidth, LONG* plHeight, LONGLONG* pllFrames) = 0;
    virtual HRESULT SetSourceFrame(LONG lWidth, LONG lHeight, LONGLONG llFrames) = 0;

    virtual HRESULT Load(IUnknown* pNode) = 0;
    virtual HRESULT Save(IUnknown* pNode) = 0;
};

// Parameters of overlays.

/// A 32-bit number: one of the two effects below.
inline constexpr ULONG ZXP_PARAM_EFFECT_ID = 0;
/// A string.
inline constexpr ULONG ZXP_PARAM_MASK_FILE = 51;
/// Doubles.
inline constexpr ULONG ZXP_PARAM_MASK_WIDTH = 52;
inline constexpr ULONG ZXP_PARAM_MASK_HEIGHT = 53;

inline constexpr LONG ZXP_EFFECT_WITHOUT_MASK = 1027;
inline constexpr LONG ZXP_EFFECT_WITH_MASK = 1028;

/// Typed, named parameters in the order in which they were added. E_INVALIDARG for an ID that is none.
struct IZXPGenericParamSet : IUnknown {
    static constexpr GUID IID = "01592cd5-caab-414d-91ee-bd5976d1c870"_guid;
    using Base = IUnknown;

    virtual HRESULT get_Count(ULONG* pulCount) = 0;
    virtual HRESULT GetValue(ULONG ulParamID, VARIANT* pValue) = 0;
    virtual HRESULT GetType(ULONG ulParamID, VARTYPE* pType) = 0;
    virtual HRESULT GetName(ULONG ulParamID, BSTR* pbstrName) = 0;
    virtual HRESULT GetDesc(ULONG ulParamID, BSTR* pbstrDesc) = 0;
    virtual HRESULT GetRange(ULONG ulParamID, VARIANT* pMin, VARIANT* pMax) = 0;
    virtual HRESULT GetUsage(ULONG ulParamID, ULONG* pulUsage) = 0;
    virtual HRESULT GetDefault(ULONG ulParamID, VARIANT* pValue) = 0;
};

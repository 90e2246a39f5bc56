#include "KVProjectData/effects/TextAttributes.h"

#include "KVProjectData/Engine/TextMarkup.h"

#include <utility>

namespace kv {
namespace {

using Told = std::optional<std::string_view>;

/// What the elements around a run tell. The views are borrowed from the tree.
struct Run {
    ULONG style = TextAttributes().style;
    Told face;
    Told height;
    Told colour;
    Told styleID;
    Told align;
    /// Stands for no text.
    bool isPlaceholder = false;
};

/// Takes over what a "font" tells.
struct FontReader final : XMLAttributeVisitor {
    explicit FontReader(Run& inner) : run(inner) {}

    void Attribute(std::string_view name, std::string_view value) override
    {
        if (name == "fontHeight") {
            run.height = value;
        } else if (name == "color") {
            run.colour = value;
        } else if (name == "SelectedStyleId") {
            run.styleID = value;
        } else if (name == "face") {
            run.face = value;
        }
    }

    Run& run;
};

void Enter(Run& run, const XmlView& element)
{
    const auto turnOn = [&run](ULONG group, ULONG on) { run.style = (run.style & ~group) | on; };
    const std::string_view name = element.Name();
    if (name == "font") {
        FontReader reader(run);
        element.ReadAttributes(reader);
    } else if (name == "p") {
        if (const Told align = element.Attribute("align")) run.align = align;
        run.isPlaceholder = IsTextPlaceholder(element);
    } else if (name == "b") {
        turnOn(kBoldOff | kBoldMixed, kBoldOn);
    } else if (name == "i") {
        turnOn(kItalicOff | kItalicMixed, kItalicOn);
    } else if (name == "u") {
        turnOn(kUnderlineOff | kUnderlineMixed, kUnderlineOn);
    }
}

void Merge(Told& common, const Told& told)
{
    if (common != told) common = kUndetermined;
}

class Reader {
public:
    TextAttributes Read(const XmlView& body)
    {
        ReadChildren(body, {});
        // The last element stands for a run.
        if (!m_any) m_common = m_last;
        Finish();
        return std::move(m_attributes);
    }

private:
    void ReadChildren(const XmlView& parent, const Run& run)
    {
        for (XmlView child = parent.FirstChild(); child; child = child.Next()) {
            if (child.IsText()) {
                Add(run, child.Text());
            } else if (child.IsElement()) {
                Run inner = run;
                Enter(inner, child);
                m_last = inner;
                ReadChildren(child, inner);
            }
        }
    }

    void Add(const Run& run, std::string_view text)
    {
        if (!run.isPlaceholder) m_attributes.text += text;
        if (!std::exchange(m_any, true)) {
            m_common = run;
            return;
        }
        Merge(m_common.face, run.face);
        Merge(m_common.height, run.height);
        Merge(m_common.colour, run.colour);
        Merge(m_common.styleID, run.styleID);
        Merge(m_common.align, run.align);
        MergeStyle(kItalicOff | kItalicOn | kItalicMixed, kItalicMixed, run);
        MergeStyle(kBoldOff | kBoldOn | kBoldMixed, kBoldMixed, run);
        MergeStyle(kUnderlineOff | kUnderlineOn | kUnderlineMixed, kUnderlineMixed, run);
    }

    void MergeStyle(ULONG group, ULONG mixed, const Run& run)
    {
        ULONG& style = m_common.style;
        if ((style & group) != (run.style & group)) style = (style & ~group) | mixed;
    }

    void Finish()
    {
        m_attributes.style = m_common.style;
        if (m_common.face) m_attributes.face = *m_common.face;
        if (m_common.align) m_attributes.align = *m_common.align;
        if (const Told height = m_common.height) {
            m_attributes.heightText = *height;
            m_attributes.height = ParseWholeTextNumber(*height);
        }
        if (const Told id = m_common.styleID)
            m_attributes.styleID = *id == kUndetermined ? -1 : ParseWholeTextNumber(*id);
        if (m_common.colour == kUndetermined) {
            m_attributes.hasColour = false;
        } else if (m_common.colour) {
            const ZXTextColour colour = ParseTextColour(*m_common.colour);
            m_attributes.colour = static_cast<ULONG>(colour.red) | static_cast<ULONG>(colour.green) << 8 |
                                  static_cast<ULONG>(colour.blue) << 16 | static_cast<ULONG>(colour.transparency) << 24;
        }
    }

    TextAttributes m_attributes;
    /// What all runs so far tell.
    Run m_common;
    bool m_any = false;
    /// Around what stands in the last element so far.
    Run m_last;
};

} // namespace

TextAttributes ReadTextAttributes(const XmlView& body)
{
    return Reader().Read(body);
}

} // namespace kv

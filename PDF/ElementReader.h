#pragma once
// Runs a page's content program one operator at a time and hands its client the elements:
// text strings, paths, images, brackets. The client pulls with Next until it gets nothing,
// steps into a form with FormBegin and out of it with End:
//
//   ElementReader reader;
//   reader.Begin(page);
//   while (Element* e = reader.Next()) {
//       if (e->GetType() == Element::e_form) { reader.FormBegin(); ...; reader.End(); }
//   }
//   reader.End();
//
// Bad content is stepped over in silence (unknown operators, missing operands, unbalanced Q,
// forms that paint themselves); what ends a page is raised out of Next.
#include <memory>

#include "Common/Matrix2D.h"
#include "PDF/CharData.h"
#include "PDF/Element.h"
#include "PDF/GState.h"
#include "PDF/Page.h"

namespace lum::SDF {
class Obj;
}

namespace lum::PDF {

class ElementReaderImpl;
class ShadowElement;

class IElementReader {
public:
    virtual ~IElementReader();
    // The next finished element of the current level, or null at its end.
    virtual Element* Next() = 0;
    // The current element if it is finished, else null.
    virtual Element* Current() = 0;
    // Enters the form of the current e_form element.
    virtual void FormBegin() = 0;
    virtual void SoftMaskBegin() = 0;
    virtual void PatternBegin(bool fill_pattern, bool reset_ctm) = 0;
    // Opens a level on the glyph procedure of one character of the current e_text element.
    virtual void Type3FontBegin(const CharData& char_data) = 0;
    virtual void GroupBegin() = 0;
    // Leaves the current level: false after an inner level, true after the outermost.
    virtual bool End() = 0;
    // For a current e_form: true when its stream gives no byte at all.
    virtual bool IsFormEmpty() = 0;
    virtual void Reserved1() {}
    virtual void Reserved2() {}
    virtual bool Reserved3() { return false; }
    virtual bool Reserved4() { return false; }
    virtual void Reserved5() {}
    virtual SDF::Obj* GetCachedImage() = 0;
    virtual SDF::Obj* GetCachedChildMask() = 0;
    virtual Common::Matrix2D GetPatternMatrix() = 0;
    virtual void Reserved6() {}
    virtual void Begin(SDF::Obj* content_stream, SDF::Obj* resource_dict = nullptr,
                       void* oc_context = nullptr, bool no_matrix = false) = 0;
    virtual void Begin(const Page& page, void* oc_context = nullptr) = 0;
    // The change list of the current element's state.
    virtual GStateChangeIterator ChangesBegin() = 0;
    virtual GStateChangeIterator ChangesEnd() = 0;
    virtual bool IsChanged(GState::GStateAttribute attr) = 0;
    virtual void ClearChangeList() = 0;
    virtual int Reserved7() { return 0; }
};

class IPDFElementReader : public IElementReader {};

// The facade that clients hold: one reader and one overlay element.
class ElementReader final : public IPDFElementReader {
public:
    ElementReader();
    ~ElementReader() override;
    ElementReader(const ElementReader&) = delete;
    ElementReader& operator=(const ElementReader&) = delete;

    Element* Next() override;
    Element* Current() override;
    void FormBegin() override;
    void SoftMaskBegin() override;
    void PatternBegin(bool fill_pattern, bool reset_ctm) override;
    void Type3FontBegin(const CharData& char_data) override;
    void GroupBegin() override;
    bool End() override;
    bool IsFormEmpty() override;
    SDF::Obj* GetCachedImage() override;
    SDF::Obj* GetCachedChildMask() override;
    Common::Matrix2D GetPatternMatrix() override;
    void Begin(SDF::Obj* content_stream, SDF::Obj* resource_dict = nullptr,
               void* oc_context = nullptr, bool no_matrix = false) override;
    void Begin(const Page& page, void* oc_context = nullptr) override;
    GStateChangeIterator ChangesBegin() override;
    GStateChangeIterator ChangesEnd() override;
    bool IsChanged(GState::GStateAttribute attr) override;
    void ClearChangeList() override;

    // When on, Next and Current hand out the overlay element, repointed at the real one with
    // nothing overridden. Off from construction; nothing in this program turns it on.
    void SetShadowMode(bool on) { m_shadow = on; }

    // Text-showing operators (Tj, TJ, ', ") met since Begin, on every level.
    UInt64 GetTextOperatorCount() const;
    // Levels open now: 1 on a page, one more for each form or Type 3 glyph entered.
    int GetLevelCount() const;

private:
    Element* Shadowed(Element* real);

    std::unique_ptr<ElementReaderImpl> mp_impl;
    std::unique_ptr<ShadowElement> mp_shadow;
    bool m_shadow = false;
};

}  // namespace lum::PDF

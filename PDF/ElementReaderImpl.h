#pragma once
// The content interpreter behind ElementReader. It reads tokens with the object parser's
// token reader straight into the operand stack, dispatches each operator by a switch on its
// bytes, and keeps one level (element, state stack, stream, resources) for the page and for
// each form or Type 3 glyph it has been asked to enter.
#include <memory>
#include <set>
#include <vector>

#include "Common/Matrix2D.h"
#include "PDF/ContentResources.h"
#include "PDF/ElementBuilderImpl.h"
#include "PDF/ElementReader.h"
#include "SDF/Parser.h"

namespace lum::Filters {
class Filter;
}
namespace lum::SDF {
class SDFDoc;
}

namespace lum::PDF {

class ElementReaderImpl final : public IPDFElementReader, private SDF::Parser {
public:
    ElementReaderImpl();
    ~ElementReaderImpl() override;

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

    // Executes the operator `token` on the operand stack. True: go on reading; false: an
    // element is finished.
    bool ProcessOperator(const char* token, size_t size);

    // Open levels: 1 on a page, one more for each form or glyph entered.
    int GetLevelCount() const { return m_level_count; }
    // Text-showing operators (Tj, TJ, ', ") met since Begin, whether they showed anything.
    UInt64 GetTextOperatorCount() const { return m_text_operators; }

protected:
    bool ContainerOperator(const char* word) override;

private:
    struct LevelInfo {
        size_t m_resource_base = 0;  // resource entries below this level's
        size_t m_q_overflow = 0;     // q past the depth bound, still to be matched by Q
        SDF::Obj* mp_owner = nullptr;  // the page, form or glyph stream (direct)
    };

    // --- Levels and streams ---
    void Reset();
    // Opens a level on `stream` (may be null: an empty level). The marked content of a page or
    // form level (`structured`) has structure parents; a glyph's has none.
    void OpenLevel(SDF::Obj* owner, std::unique_ptr<Filters::Filter> stream,
                   const GStateImpl* parent_state, const Common::Matrix2D& base,
                   bool structured = true);
    // The level's Default* colour spaces.
    void LookUpDefaultColorSpaces(ElementBuilderImpl& element);
    // A decoded stream for content, or null when its chain can't be built.
    static std::unique_ptr<Filters::Filter> OpenContentStream(SDF::Obj* stream);
    // The next entry of the page's Contents array that is a stream, made the bottom stream.
    bool NextContentStream();
    void AttachTop();
    bool IsOpen(SDF::Obj* obj) const;

    // --- The reading loop ---
    // Reads and runs operators until an element is finished (true) or the level's content
    // ends (false).
    bool ReadNextOperator();
    // The reset at the start of every Next; may finish the next element (TJ, ', ").
    void ResetElement();
    // Walks on through the TJ array; true when it stopped at a string (an e_text is finished).
    bool WalkTextArray();
    // Shows the element's current string from the end of the last one.
    void ShowString(double adjustment);

    // --- Operators ---
    size_t Argc() const { return m_operand_stack.size(); }
    // Operand k (from 0) of the top n.
    SDF::Obj* Arg(size_t n, size_t k) const { return m_operand_stack[m_operand_stack.size() - n + k]; }
    double Num(size_t n, size_t k) const;
    // A name operand, or the object's type error.
    const SDF::Name& NameArg(size_t n, size_t k) const;
    // Numbers at the top of the stack, counted down to the first operand that isn't one.
    size_t TopNumbers(size_t skip_top) const;

    bool OpPush();
    bool OpPop();
    bool OpPath(char op, size_t size, const char* token);
    bool OpPaint(bool close, bool stroke, bool fill, bool winding);
    bool OpDash();
    bool OpExtGState();
    void ApplyExtGState(SDF::Obj* dict);
    bool OpDeviceColor(bool stroke, int components);
    bool OpColorSpace(bool stroke);
    bool OpColor(bool stroke, bool allow_pattern);
    bool OpShading();
    bool OpXObject();
    bool OpInlineImage();
    bool OpTextFont();
    bool OpTextMove(double tx, double ty);
    bool OpNextLine();
    // Moves the string or array on top of the stack into the element; the one it held before
    // is spent.
    void TakeTextOperand();
    bool OpShowString();
    bool OpShowArray();
    bool OpNextLineShow(bool with_spacing);
    bool OpMarkedContent(Element::Type kind, bool with_properties);

    ColorSpace Substitute(const ColorSpace& cs) const;

    // --- State ---
    std::vector<std::unique_ptr<ElementBuilderImpl>> m_levels;
    std::vector<LevelInfo> m_level_info;
    int m_level_count = 0;
    ElementBuilderImpl* mp_element = nullptr;

    SDF::Obj* mp_contents = nullptr;
    UInt32 m_contents_index = 0;
    UInt32 m_contents_count = 0;
    bool m_content_end = true;

    std::vector<std::unique_ptr<Filters::Filter>> m_streams;  // bottom first; null: empty
    ContentResources m_resources;
    std::vector<Common::Matrix2D> m_matrices;
    std::set<SDF::Obj*> m_open_set;
    std::vector<SDF::Obj*> m_open_stack;
    void* mp_oc_context = nullptr;
    SDF::SDFDoc* mp_doc = nullptr;
    // What an operator that ran inside an open array left for the reading loop: the array's
    // end must not run it a second time.
    enum class ContainerRun { e_none, e_finished, e_failed };
    ContainerRun m_container_run = ContainerRun::e_none;
    UInt64 m_text_operators = 0;
};

}  // namespace lum::PDF

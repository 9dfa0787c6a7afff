// Levels, streams and the reading loop of the content interpreter. The operators themselves
// live in ElementReaderOps.cpp.
#include "PDF/ElementReaderImpl.h"

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/FilterReader.h"
#include "PDF/Font/Font.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

namespace lum::PDF {

namespace {

constexpr size_t kInitialLevels = 3;

// The Matrix entry of a form or stream, when it is an array of six numbers.
bool ReadMatrix(SDF::Obj* owner, Common::Matrix2D& out) {
    try {
        SDF::Obj* m = owner ? owner->FindObj(SDF::e_Matrix) : nullptr;
        if (!m || !m->IsArray() || m->Size() < 6) return false;
        double v[6];
        for (UInt32 i = 0; i < 6; ++i) {
            SDF::Obj* n = m->GetAt(i);
            if (!n->IsNumber()) return false;
            v[i] = n->GetNumber();
        }
        out = Common::Matrix2D(v[0], v[1], v[2], v[3], v[4], v[5]);
        return true;
    } catch (const Common::Exception&) {
        return false;
    }
}

SDF::Obj* FindEntry(SDF::Obj* dict, SDF::StaticName key) {
    try {
        return dict ? dict->FindObj(key) : nullptr;
    } catch (const Common::Exception&) {
        return nullptr;
    }
}

}  // namespace

IElementReader::~IElementReader() = default;

ElementReaderImpl::ElementReaderImpl() : SDF::Parser(nullptr) {
    m_levels.reserve(kInitialLevels);
    m_matrices.reserve(kInitialLevels);
}

ElementReaderImpl::~ElementReaderImpl() {
    // The parser must let go of the streams before they are destroyed.
    AttachStream(nullptr);
}

// --- Levels ---

void ElementReaderImpl::Reset() {
    AttachStream(nullptr);
    ClearStack();
    m_streams.clear();
    m_resources.Clear();
    m_matrices.clear();
    m_open_set.clear();
    m_open_stack.clear();
    m_level_info.clear();
    m_level_count = 0;
    mp_element = nullptr;
    mp_contents = nullptr;
    m_contents_index = m_contents_count = 0;
    m_content_end = true;
    m_container_run = ContainerRun::e_none;
    m_text_operators = 0;
    mp_doc = nullptr;
}

void ElementReaderImpl::AttachTop() {
    AttachStream(m_streams.empty() ? nullptr : m_streams.back().get());
}

bool ElementReaderImpl::IsOpen(SDF::Obj* obj) const {
    if (!obj) return false;
    try {
        return m_open_set.count(obj->GetDirect()) != 0;
    } catch (const Common::Exception&) {
        return false;
    }
}

std::unique_ptr<Filters::Filter> ElementReaderImpl::OpenContentStream(SDF::Obj* stream) {
    try {
        if (stream && stream->IsStream()) return stream->GetDecodedStream();
    } catch (const Common::Exception&) {
        // A stream whose decoders can't be made reads as empty: the other streams go on.
    }
    return nullptr;
}

void ElementReaderImpl::OpenLevel(SDF::Obj* owner, std::unique_ptr<Filters::Filter> stream,
                                  const GStateImpl* parent_state, const Common::Matrix2D& base,
                                  bool structured) {
    if (size_t(m_level_count) == m_levels.size())
        m_levels.push_back(std::make_unique<ElementBuilderImpl>());
    ElementBuilderImpl* element = m_levels[size_t(m_level_count)].get();
    const ElementBuilderImpl* parent = m_level_count > 0 ? mp_element : nullptr;
    element->ResetLevel(parent_state);
    element->m_base_matrix = base;
    if (parent) {
        element->m_default_cmyk = parent->m_default_cmyk;
        element->m_default_rgb = parent->m_default_rgb;
        element->m_default_gray = parent->m_default_gray;
        element->m_has_default_cs = parent->m_has_default_cs;
    }

    SDF::Obj* direct = nullptr;
    try {
        direct = owner ? owner->GetDirect() : nullptr;
    } catch (const Common::Exception&) {
    }
    LevelInfo info;
    info.mp_owner = direct;
    // The resource entries of this level were pushed by the caller.
    info.m_resource_base = m_level_info.empty() ? 0 : m_resources.Size() - 1;
    m_level_info.push_back(info);
    m_open_stack.push_back(direct);
    if (direct) m_open_set.insert(direct);
    m_matrices.push_back(base);
    element->mp_struct_owner = structured ? direct : nullptr;

    m_streams.push_back(std::move(stream));
    AttachTop();
    ++m_level_count;
    mp_element = element;
    m_content_end = false;
    LookUpDefaultColorSpaces(*element);
}

void ElementReaderImpl::LookUpDefaultColorSpaces(ElementBuilderImpl& element) {
    struct Default {
        const char* name;
        ColorSpace ElementBuilderImpl::*slot;
        ColorSpace::Type family;
    };
    static const Default kDefaults[] = {
        {"DefaultRGB", &ElementBuilderImpl::m_default_rgb, ColorSpace::e_device_rgb},
        {"DefaultCMYK", &ElementBuilderImpl::m_default_cmyk, ColorSpace::e_device_cmyk},
        {"DefaultGray", &ElementBuilderImpl::m_default_gray, ColorSpace::e_device_gray},
    };
    for (const Default& d : kDefaults) {
        SDF::Obj* found = m_resources.GetResource(SDF::e_ColorSpace, SDF::Name(d.name));
        if (!found) continue;
        try {
            const ColorSpace cs(found);
            // A replacement must take the components of the family it replaces.
            const int want = d.family == ColorSpace::e_device_rgb    ? 3
                             : d.family == ColorSpace::e_device_cmyk ? 4
                                                                     : 1;
            if (!cs || cs.GetComponentNum() != want || cs.GetType() == ColorSpace::e_pattern) continue;
            element.*d.slot = cs;
            element.m_has_default_cs = true;
        } catch (const Common::Exception&) {
            // A broken default leaves the device space in place.
        }
    }
}

void ElementReaderImpl::Begin(const Page& page, void* oc_context) {
    Reset();
    SDF::Obj* page_dict = page.GetSDFObj();
    SDF::SDFDoc* doc = page_dict ? page_dict->GetDoc() : nullptr;
    if (!doc) throw Common::Exception("doc", __LINE__, __FILE__, LUM_FUNCTION, "The page is not valid");
    mp_doc = doc;
    mp_oc_context = oc_context;
    m_resources.SetDoc(doc);

    mp_contents = page.GetContents();
    std::unique_ptr<Filters::Filter> first;
    bool empty = mp_contents == nullptr;
    if (mp_contents) {
        if (mp_contents->IsStream()) {
            first = OpenContentStream(mp_contents);
        } else if (mp_contents->IsArray()) {
            m_contents_count = UInt32(mp_contents->Size());
            m_contents_index = 0;
            empty = true;
        } else {
            mp_contents = nullptr;
            throw Common::Exception("mp_contents->IsArray() == true", __LINE__, __FILE__,
                                    LUM_FUNCTION, "Bad page");
        }
    }
    m_resources.Push(page.FindInheritedAttribute(SDF::e_Resources));
    OpenLevel(page_dict, std::move(first), nullptr, Common::Matrix2D());
    if (empty && (m_contents_count == 0 || !NextContentStream())) m_content_end = true;
}

void ElementReaderImpl::Begin(SDF::Obj* content_stream, SDF::Obj* resource_dict, void* oc_context,
                              bool no_matrix) {
    Reset();
    mp_oc_context = oc_context;
    mp_doc = content_stream ? content_stream->GetDoc() : nullptr;
    m_resources.SetDoc(mp_doc);
    SDF::Obj* own = FindEntry(content_stream, SDF::e_Resources);
    if (resource_dict) m_resources.Push(resource_dict);
    if (own && (!resource_dict || own->GetDirect() != resource_dict->GetDirect())) m_resources.Push(own);
    if (m_resources.Size() == 0) m_resources.Push(nullptr);
    Common::Matrix2D base;
    if (!no_matrix) ReadMatrix(content_stream, base);
    OpenLevel(content_stream, OpenContentStream(content_stream), nullptr, base);
    if (!(base == Common::Matrix2D())) mp_element->State().Concat(base);
    // Two resource entries on the bottom level both belong to it.
    m_level_info.back().m_resource_base = 0;
}

bool ElementReaderImpl::NextContentStream() {
    while (mp_contents && m_contents_index < m_contents_count) {
        SDF::Obj* entry = nullptr;
        try {
            entry = mp_contents->GetAt(m_contents_index++);
            if (!entry || !entry->IsStream()) continue;
        } catch (const Common::Exception&) {
            continue;  // an entry that can't be loaded is skipped like one that isn't a stream
        }
        AttachStream(nullptr);
        m_streams.front() = OpenContentStream(entry);
        AttachTop();
        return true;
    }
    return false;
}

void ElementReaderImpl::FormBegin() {
    if (!(mp_element && mp_element->ElementReady() && mp_element->GetType() == Element::e_form &&
          mp_element->GetXObject()))
        throw Common::Exception(
            "mp_element && mp_element->ElementReady() && mp_element->GetType()==Element::e_form && "
            "mp_element->GetXObject()",
            __LINE__, __FILE__, LUM_FUNCTION, "Failed to open a Form XObject");
    SDF::Obj* form = mp_element->GetXObject();
    m_resources.Push(FindEntry(form, SDF::e_Resources));
    Common::Matrix2D matrix;
    const bool has_matrix = ReadMatrix(form, matrix);
    const Common::Matrix2D base = has_matrix ? matrix * m_matrices.back() : m_matrices.back();
    std::unique_ptr<Filters::Filter> stream;
    if (m_level_count < Limits::kMaxContentLevels) stream = OpenContentStream(form);
    OpenLevel(form, std::move(stream), &mp_element->State(), base);
    if (has_matrix) mp_element->State().Concat(matrix);
}

void ElementReaderImpl::Type3FontBegin(const CharData& char_data) {
    if (!(mp_element && mp_element->GetType() == Element::e_text))
        throw Common::Exception("mp_element && mp_element->GetType()==Element::e_text", __LINE__,
                                __FILE__, LUM_FUNCTION, "Type3FontBegin: not a text element");
    const GStateImpl& parent = mp_element->State();
    const Font& font = parent.GetFont();
    SDF::Obj* glyph = font.GetType3GlyphStream(char_data.char_code);
    const double size = parent.GetFontSize();
    const double th = parent.GetHorizontalScale() / 100.0;
    const Common::Matrix2D glyph_to_text = font.GetType3FontMatrix() *
                                           Common::Matrix2D::Scale(th * size, size) *
                                           Common::Matrix2D::Translation(char_data.x, char_data.y) *
                                           mp_element->GetTextMatrix();
    const Common::Matrix2D base = m_matrices.back();
    m_resources.Push(FindEntry(font.GetSDFObj(), SDF::e_Resources));
    std::unique_ptr<Filters::Filter> stream;
    if (glyph && !IsOpen(glyph) && m_level_count < Limits::kMaxContentLevels)
        stream = OpenContentStream(glyph);
    else
        glyph = nullptr;  // an empty level owns nothing
    OpenLevel(glyph, std::move(stream), &parent, base, false);
    GStateImpl& state = mp_element->State();
    state.SetCTM(glyph_to_text * state.GetCTM());
    state.SetStrokeColorSpaceOnly(state.GetFillColorSpace());
    state.SetStrokeColor(state.GetFillPattern(), state.GetFillColor());
}

void ElementReaderImpl::SoftMaskBegin() { LUM_FAIL("Failed to open a Soft Mask."); }

void ElementReaderImpl::PatternBegin(bool, bool) { LUM_FAIL("Failed to open a Pattern."); }

void ElementReaderImpl::GroupBegin() { LUM_FAIL("Not Implemented"); }

bool ElementReaderImpl::End() {
    if (m_level_count <= 1) {
        Reset();
        return true;
    }
    const LevelInfo info = m_level_info.back();
    // The stream is still there when End comes before the level's content ended.
    if (m_streams.size() == size_t(m_level_count)) {
        AttachStream(nullptr);
        m_streams.pop_back();
    }
    m_resources.Resize(info.m_resource_base);
    if (info.mp_owner) m_open_set.erase(info.mp_owner);
    m_open_stack.pop_back();
    m_matrices.pop_back();
    m_level_info.pop_back();
    --m_level_count;
    mp_element = m_levels[size_t(m_level_count - 1)].get();
    AttachTop();
    m_content_end = false;
    return false;
}

bool ElementReaderImpl::IsFormEmpty() {
    if (!mp_element || mp_element->GetType() != Element::e_form) return false;
    std::unique_ptr<Filters::Filter> stream = OpenContentStream(mp_element->GetXObject());
    if (!stream) return true;
    try {
        Filters::FilterReader reader(stream.get());
        return reader.Peek() < 0;
    } catch (const Common::Exception&) {
        return true;
    }
}

SDF::Obj* ElementReaderImpl::GetCachedImage() { LUM_FAIL("Not Implemented"); }

SDF::Obj* ElementReaderImpl::GetCachedChildMask() { LUM_FAIL("Not Implemented"); }

Common::Matrix2D ElementReaderImpl::GetPatternMatrix() {
    return m_matrices.empty() ? Common::Matrix2D() : m_matrices.back();
}

GStateChangeIterator ElementReaderImpl::ChangesBegin() {
    LUM_CHECK_OBJECT(mp_element, "Bad stream");
    return mp_element->State().ChangesBegin();
}

GStateChangeIterator ElementReaderImpl::ChangesEnd() {
    LUM_CHECK_OBJECT(mp_element, "Bad stream");
    return mp_element->State().ChangesEnd();
}

bool ElementReaderImpl::IsChanged(GState::GStateAttribute attr) {
    LUM_CHECK_OBJECT(mp_element, "Bad stream");
    return mp_element->State().IsChanged(attr);
}

void ElementReaderImpl::ClearChangeList() {
    LUM_CHECK_OBJECT(mp_element, "Bad stream");
    mp_element->State().ClearChangeList();
}

// --- The reading loop ---

Element* ElementReaderImpl::Next() {
    if (!mp_element) return nullptr;
    ResetElement();
    while (!mp_element->ElementReady()) {
        if (!ReadNextOperator()) break;
        if (!mp_element) return nullptr;
    }
    return mp_element && mp_element->ElementReady() ? mp_element : nullptr;
}

Element* ElementReaderImpl::Current() {
    return mp_element && mp_element->ElementReady() ? mp_element : nullptr;
}

bool ElementReaderImpl::ReadNextOperator() {
    if (m_content_end) return false;
    ClearStack();
    ResetNesting();
    for (;;) {
        while (GetObj()) {
        }
        if (m_container_run != ContainerRun::e_none) {
            const bool finished = m_container_run == ContainerRun::e_finished;
            m_container_run = ContainerRun::e_none;
            ClearStack();
            ResetNesting();
            if (finished) return true;
            continue;
        }
        if (GetTokenSize() == 0) {
            if (m_content_end) return false;
            if (m_streams.size() > 1) {
                // The end of an inner level: the client calls End.
                AttachStream(nullptr);
                m_streams.pop_back();
                m_resources.Resize(m_level_info.back().m_resource_base);
                AttachTop();
                mp_element = nullptr;
                return false;
            }
            if (NextContentStream()) continue;  // operands carry over into the next stream
            m_content_end = true;
            return false;
        }
        if (m_content_end) return false;
        if (!ProcessOperator(GetToken(), GetTokenSize())) return true;
        ClearStack();
        ResetNesting();
    }
}

bool ElementReaderImpl::ContainerOperator(const char* word) {
    // An inner array already ran this word: the enclosing ones close behind it.
    if (m_container_run != ContainerRun::e_none) return false;
    const size_t size = GetTokenSize();
    if (size == 0) {
        if (m_streams.size() == 1 && NextContentStream()) return true;
        m_content_end = true;
        throw Common::Exception("m_content_end == false", __LINE__, __FILE__, LUM_FUNCTION,
                                "Illegal content stream end");
    }
    // Text-showing and marked-content operators close the array and take it as operand.
    switch (size) {
        case 1:
            if (word[0] == '\'' || word[0] == '"') return false;
            break;
        case 2:
            if (word[0] == 'T' && (word[1] == 'J' || word[1] == 'j')) return false;
            if ((word[0] == 'D' || word[0] == 'M') && word[1] == 'P') return false;
            break;
        case 3:
            if (word[0] == 'B' && word[1] == 'D' && word[2] == 'C') return false;
            if (word[0] == 'B' && word[1] == 'M' && word[2] == 'C') return false;
            break;
    }
    try {
        if (ProcessOperator(word, size)) return true;
    } catch (const Common::Exception&) {
        m_container_run = ContainerRun::e_failed;
        return false;
    }
    ClearStack();
    m_container_run = ContainerRun::e_finished;
    return false;
}

}  // namespace lum::PDF

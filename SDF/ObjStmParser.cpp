#include "SDF/ObjStmParser.h"

#include <algorithm>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/NumberConversions.h"
#include "SDF/DocImpl.h"

namespace lum::SDF {

namespace {

// Head values are object numbers and offsets; a value no 32-bit number holds reads as 0,
// which fails as a number and points nowhere as an offset.
UInt32 HeadValue(const Obj* v) {
    return Common::TruncateToUInt32Or(v->GetNumber(), 0);
}

Int64 RequiredInt(Obj* stream, StaticName key) {
    return Common::TruncateSaturated(stream->Get(key)->second->GetNumber());
}

}  // namespace

ObjStmParser::ObjStmParser(Obj* stream, DocImpl* doc, bool rebuild)
    : Parser(doc), m_rebuild(rebuild) {
    m_n = RequiredInt(stream, e_N);
    m_first = RequiredInt(stream, e_First);
    m_decoded = stream->GetDecodedStream();
    AttachStream(m_decoded.get());
    // A head longer than any table can use is hostile; its tail is ignored.
    const Int64 n = std::min(m_n, Limits::kMaxObjStmObjects);
    for (Int64 i = 0; i < n; ++i) {
        ResetNesting();
        LUM_CHECK(GetObj(), "Compressed object is corrupt");
        LUM_CHECK(GetObj(), "Compressed object is corrupt");
        LUM_CHECK(m_operand_stack.size()==2, "Compressed object is corrupt");
        m_pairs.push_back(HeadValue(m_operand_stack[0]));
        m_pairs.push_back(HeadValue(m_operand_stack[1]));
        ClearStack();
    }
    SkipTo(m_first);
}

ObjStmParser::~ObjStmParser() {
    ClearStack();
    AttachStream(nullptr);
}

UInt32 ObjStmParser::CurrentObjNum() const noexcept {
    return m_pos < GetCount() ? m_pairs[2 * m_pos] : 0;
}

void ObjStmParser::SkipTo(Int64 target) {
    const Int64 distance = target - Int64(m_stream.Count());
    if (distance > 0) m_stream.Skip(size_t(distance));
}

Obj* ObjStmParser::GetNextObj() {
    if (m_pos < GetCount()) SkipTo(m_first + Int64(m_pairs[2 * m_pos + 1]));
    ClearStack();
    ResetNesting();
    LUM_CHECK(GetObj(), "Compressed object is corrupt");
    ++m_pos;
    LUM_CHECK(m_operand_stack.size()==1, "Compressed object is corrupt");
    return PopObjNoDelete();
}

// Object streams met in a rebuild enter numbers under the same bound as the rebuild itself.
void ObjStmParser::XRefResize(UInt32 obj_num) { mp_doc->m_xref.GrowToHold(obj_num, LUM_FUNCTION); }

bool ObjStmParser::ContainerOperator(const char* word) {
    if (word[0] != 'R' || word[1] != 0) return false;
    const size_t size = m_operand_stack.size();
    if (size < 2 || m_operand_stack[size - 1]->IsIndirect() ||
        m_operand_stack[size - 2]->IsIndirect())
        return false;
    const UInt32 num = ToObjNum(m_operand_stack[size - 2]);
    const UInt16 gen = UInt16(ToObjNum(m_operand_stack[size - 1]));
    PopObj();
    PopObj();
    if (!mp_doc) {
        Push(new Null());
        return true;
    }
    if (m_rebuild) {
        XRefResize(num);
        // A reference met first during the rebuild is a placeholder until its object is seen.
        if (!mp_doc->m_xref[num]) {
            auto* entry = new Indirect(mp_doc, num, gen, Indirect::kPlaceholderOffset, 1);
            entry->SetModifiedFlag(true);
            mp_doc->m_xref.Set(num, entry);
        }
    }
    Indirect* ref = mp_doc->m_xref.empty() ? nullptr : mp_doc->GetObj(num);
    if (ref)
        Push(ref);
    else
        Push(new Null());
    return true;
}

}  // namespace lum::SDF

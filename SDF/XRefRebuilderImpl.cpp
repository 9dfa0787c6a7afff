#include "SDF/XRefRebuilderImpl.h"

#include <cstdio>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/NumberConversions.h"
#include "SDF/DocImpl.h"
#include "SDF/KeywordScanner.h"
#include "SDF/ObjParser.h"

namespace lum::SDF {

using Common::CutTo16;
using Common::CutTo32;
using Common::CutTo64;
using Common::StartsWith;

namespace {
// The rebuild takes stream data on trust only up to one end-of-line byte in front of
// "endstream": the length of a stream without Filter is E - S - this.
constexpr Int64 kEndStreamAndEol = 10;
constexpr char kEndObj[] = "endobj";
constexpr size_t kEndObjLen = sizeof(kEndObj) - 1;
}  // namespace

XRefRebuilderImpl::XRefRebuilderImpl(DocImpl* doc) : Parser(doc) {}

XRefRebuilderImpl::~XRefRebuilderImpl() {
    ClearStack();
    AttachStream(nullptr);
}

void XRefRebuilderImpl::Rebuild() {
    mp_doc->m_xref.Clear();
    try {
        if (mp_doc->m_input) m_stream_owner = mp_doc->m_input->CreateInputIterator();
    } catch (const Common::Exception&) {
        m_stream_owner.reset();  // a filter without iterators: refused just below
    }
    LUM_CHECK(m_stream_owner.get() && m_stream_owner->CanSeek() &&
                  m_stream_owner->IsInputFilter(),
              "The input filter is not seekable");
    m_stream_owner->Seek(0, Filters::Filter::e_begin);
    AttachStream(m_stream_owner.get());
    SkipHeader();

    // A failure that no narrower handler takes ends the scan: the normal end in a damaged
    // file. Everything found until then stays.
    try {
        for (;;) {
            SkipWhiteSpaceAndComments();
            UInt64 pos = static_cast<UInt64>(m_stream.Tell());
            ClearStack();
            ResetNesting();
            while (GetObj()) {
            }
            const char* word = GetToken();
            if (word[0] == '\0') break;
            if (StartsWith(word, "xref")) {
                SkipXRefTable();
                continue;
            }
            if (StartsWith(word, "startxref")) {
                GetObj();  // the offset: worthless here
                SkipWhiteSpaceAndComments();
                pos = static_cast<UInt64>(m_stream.Tell());
                ClearStack();
                ResetNesting();
                while (GetObj()) {
                }
                // The end of a file, unless an object follows directly.
                if (!StartsWith(GetToken(), "obj") || m_operand_stack.size() != 2) break;
            } else if (StartsWith(word, "trailer")) {
                GetObj();
                FoundTrailer();
                continue;
            } else if (!StartsWith(word, "obj") || m_operand_stack.size() != 2) {
                continue;  // endobj, endstream and rubbish
            }
            const UInt64 num = CutTo64(m_operand_stack[0]->GetNumber());
            const UInt16 gen = CutTo16(m_operand_stack[1]->GetNumber());
            Rebuild(ObjectBody{}, pos, num, gen);
        }
    } catch (const Common::Exception&) {
    }
    Finish();
}

void XRefRebuilderImpl::Rebuild(ObjectBody, UInt64 pos, UInt64 obj_num, UInt16 gen) {
    XRefResize(obj_num);
    const UInt32 num = static_cast<UInt32>(obj_num);
    try {
        ClearStack();
        ResetNesting();
        while (GetObj()) {
        }
    } catch (const Common::Exception&) {
        SkipToEndObj();  // the object is lost, the scan goes on behind it
        return;
    }
    const char* word = GetToken();
    Obj* target = nullptr;
    if (StartsWith(word, "endobj")) {
        LUM_CHECK(m_operand_stack.size() >= 1, "Operator endobj expects a single argument");
    } else if (StartsWith(word, "stream")) {
        bool done = false;
        target = Rebuild(StreamData{}, pos, num, gen, done);
        if (done) return;
    } else {
        LUM_FAIL("Unexpected operator encountered");
    }
    Record(pos, num, gen, target);
}

Obj* XRefRebuilderImpl::Rebuild(StreamData, UInt64 pos, UInt32 num, UInt16 gen, bool& done) {
    if (m_stream.Get() == '\r' && m_stream.Peek() == '\n') m_stream.Get();
    const UInt64 data_start = static_cast<UInt64>(m_stream.Tell());
    LUM_CHECK(m_operand_stack.size() == 1, "Stream expects a dictionary as an argument");
    LUM_CHECK(m_operand_stack.back() && m_operand_stack.back()->IsDict(),
              "Stream expects a dictionary as an argument");
    Dict* dict = dynamic_cast<Dict*>(m_operand_stack.back());
    LUM_CHECK(dict, "Stream expects a dictionary as an argument");
    auto* stream = new FileStream(dict, data_start, num, gen);
    m_operand_stack.back() = stream;

    // The data is searched, never tokenised. A stream ends at an "endstream" that "endobj"
    // follows, so data holding the word "endstream" survives.
    StreamEnd end;
    const int byte = SkipPastStreamEnd(m_stream, end) ? 0 : EOF;
    LUM_CHECK(byte != EOF, "Unexpected end of stream");
    const UInt64 data_end = end.behind_endstream;

    Obj* taken = nullptr;
    Obj* type = nullptr;
    try {
        if (!stream->FindObj(e_Filter)) {
            // Only unfiltered data can be measured from the keywords; a stream that ends
            // right behind its "stream" line is empty.
            const Int64 length = static_cast<Int64>(data_end - data_start) - kEndStreamAndEol;
            stream->PutNumber(e_Length, static_cast<double>(length > 0 ? length : 0));
            taken = PopObjNoDelete();
        }
        type = stream->FindObj(e_Type);
        if (type && !type->IsName()) type = nullptr;
    } catch (const Common::Exception&) {
        type = nullptr;
    }
    if (!type || num == 0) return taken;  // entry 0 holds the trailer, never an object

    const char* type_name = type->GetName();
    if (std::strcmp(type_name, "XRef") == 0) {
        if (FoundTrailer(taken)) {
            mp_doc->m_has_xref_stream = true;
            done = true;
            return nullptr;
        }
        return taken;
    }
    if (std::strcmp(type_name, "ObjStm") == 0) {
        XRefTable& xref = mp_doc->m_xref;
        Indirect* entry = xref[num];
        if (entry) {
            AssocIndirectVst(entry).Walk(*stream);
            if (taken) Push(taken);  // dies with the stack, after its objects are read
        } else {
            entry = new Indirect(mp_doc, num, gen, pos, 1);
            entry->SetModifiedFlag(true);
            xref.Set(num, entry);
            if (!taken) taken = PopObjNoDelete();
            entry->SetTarget(taken);
        }
        mp_doc->m_obj_parser->LoadCompressedObjects(stream, true);
        done = true;
        return nullptr;
    }
    return taken;
}

void XRefRebuilderImpl::Record(UInt64 pos, UInt32 num, UInt16 gen, Obj* target) {
    if (num == 0) {
        DeleteDirect(target);
        return;
    }
    XRefTable& xref = mp_doc->m_xref;
    Indirect* entry = xref[num];
    if (entry) {
        entry->SetOffset(pos);
        entry->SetGenField(gen);
        entry->SetField1(1);
        // The last definition in the file wins, also over a value that an earlier one (or
        // an object stream) left loaded.
        if (entry->GetTarget()) DeleteDirect(entry->ReleaseTarget());
    } else {
        entry = new Indirect(mp_doc, num, gen, pos, 1);
        entry->SetModifiedFlag(true);
        xref.Set(num, entry);
    }
    if (target) entry->SetTarget(target);
}

void XRefRebuilderImpl::SkipToEndObj() {
    for (;;) {
        int c = m_stream.Get();
        if (c < 0) return;
        if (!IsWhite(c) && !IsDelimiter(c)) continue;
        // Plain reads: the byte that fails the match is consumed with it.
        size_t i = 0;
        while (i < kEndObjLen && m_stream.Get() == kEndObj[i]) ++i;
        if (i == kEndObjLen) return;
    }
}

void XRefRebuilderImpl::SkipXRefTable() {
    for (;;) {
        ClearStack();
        ResetNesting();
        while (GetObj()) {
        }
        const char* word = GetToken();
        if (word[0] == 't' || word[0] == '\0') {
            LUM_CHECK_AS(StartsWith(word, "trailer"),
                         "opr_str[0] == 't' && opr_str[1] == 'r' && opr_str[2] == 'a' && "
                         "opr_str[3] == 'i' && opr_str[4] == 'l' && opr_str[5] == 'e' && "
                         "opr_str[6] == 'r'",
                         "Trailer expected.");
            GetObj();
            FoundTrailer();
            return;
        }
    }
}

bool XRefRebuilderImpl::FoundTrailer(Obj* candidate) {
    Obj* direct_obj = candidate;
    if (!direct_obj) {
        if (m_operand_stack.size() == 0)
            throw Common::Exception("!m_operand_stack.size()==0", __LINE__, __FILE__,
                                    LUM_FUNCTION, "rebuild error");
        direct_obj = m_operand_stack.back();
    }
    LUM_CHECK(direct_obj->IsDict() || direct_obj->IsStream(), "rebuild error");

    XRefTable& xref = mp_doc->m_xref;
    Indirect* zero = xref.empty() ? nullptr : xref[0];
    Obj* current = zero ? zero->GetTarget() : nullptr;
    // The first trailer is always taken. A later one only when it starts a chain (no Prev:
    // the main trailer of a linearised file, the newest of several revisions), and a plain
    // trailer never displaces a cross-reference stream.
    if (current && direct_obj->FindObj(e_Prev)) return false;
    if (current && current->IsStream() && direct_obj->IsDict()) return false;
    if (!zero) {
        XRefResize(0);
        zero = new Indirect(mp_doc, 0, 65535, 0, 0);
        zero->SetModifiedFlag(true);
        xref.Set(0, zero);
    }
    if (!candidate) PopObjNoDelete();
    zero->SetTarget(direct_obj);
    return true;
}

void XRefRebuilderImpl::XRefResize(UInt64 obj_num) {
    mp_doc->m_xref.GrowToHold(obj_num, LUM_FUNCTION);
}

bool XRefRebuilderImpl::ContainerOperator(const char*) {
    const size_t size = m_operand_stack.size();
    LUM_CHECK_AS(size >= 2, "stack_size>=2", "Reference expects two arguments");
    Obj* num_obj = m_operand_stack[size - 2];
    Obj* gen_obj = m_operand_stack[size - 1];
    // A reference as operand would be loaded to answer GetNumber: not in the middle of a scan.
    LUM_CHECK(!num_obj->IsIndirect() && !gen_obj->IsIndirect(),
              "Reference expects two arguments");
    const UInt64 num = CutTo64(num_obj->GetNumber());
    const UInt16 gen = CutTo16(gen_obj->GetNumber());
    PopObj();
    PopObj();
    XRefResize(num);
    Indirect* entry = mp_doc->m_xref[num];
    if (!entry) {
        entry = new Indirect(mp_doc, static_cast<UInt32>(num), gen, Indirect::kPlaceholderOffset, 1);
        entry->SetModifiedFlag(true);
        mp_doc->m_xref.Set(num, entry);
    }
    Push(entry);
    return true;
}

void XRefRebuilderImpl::Finish() {
    ClearStack();
    XRefTable& xref = mp_doc->m_xref;
    for (size_t n = 0; n < xref.size(); ++n) {
        if (xref[n]) continue;
        auto* entry = new Indirect(mp_doc, static_cast<UInt32>(n), 1, 0, 0);
        entry->SetModifiedFlag(true);
        xref.Set(n, entry);
    }
    if (xref.empty()) {
        auto* entry = new Indirect(mp_doc, 0, 65535, 0, 0);
        xref.PushBack(entry);
        entry->SetTarget(new Dict());
    } else if (!xref[0]->GetTarget()) {
        xref[0]->SetTarget(new Dict());
    }
}

}  // namespace lum::SDF

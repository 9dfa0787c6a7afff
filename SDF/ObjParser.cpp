// Loading one object of the file: from its offset (kind 1), or through the object stream that
// holds it (kind 2).
#include "SDF/ObjParser.h"

#include <cstring>

#include "Common/Exception.h"
#include "Common/NumberConversions.h"
#include "SDF/DocImpl.h"
#include "SDF/ObjStmParser.h"
#include "SDF/SecurityHandler.h"

namespace lum::SDF {

namespace {

using Common::StartsWith;

}  // namespace

ObjParser::ObjParser(DocImpl* doc, Filters::Filter* input) : Parser(doc, input) {}

ObjParser::~ObjParser() = default;

bool ObjParser::ContainerOperator(const char* word) {
    if (word[0] != 'R' || word[1] != 0) return false;
    const size_t size = m_operand_stack.size();
    LUM_CHECK_AS(size >= 2, "stack_size>=2", "Reference expects two arguments");
    // "7 0 R 0 R": the number of a reference would be read by loading its target through this
    // very parser, in the middle of the object it is parsing, so such operands are refused.
    LUM_CHECK_AS(!m_operand_stack[size - 1]->IsIndirect() && !m_operand_stack[size - 2]->IsIndirect(),
                 "stack_size>=2", "Reference expects two arguments");
    // The generation is read and ignored: a reference never checks generations.
    const UInt32 num = ToObjNum(m_operand_stack[size - 2]);
    m_operand_stack[size - 1]->GetNumber();
    PopObj();
    PopObj();
    Push(mp_doc->GetObj(num));
    return true;
}

// The one place where strings meet decryption: only values of the file's own objects, with
// the numbers of the header being parsed (not those of the table).
void ObjParser::OnString(std::vector<UInt8>& bytes) {
    if (!m_in_object || !mp_doc) return;
    if (SecurityHandler* crypt = mp_doc->GetCryptHandler())
        crypt->DecryptString(bytes, m_obj_num, m_gen);
}

void ObjParser::GetObj(Indirect& entry) {
    const UInt8 kind = entry.GetField1();
    if (kind == 2) {
        const UInt64 container = entry.GetOffset();
        LUM_CHECK_AS(container < mp_doc->m_xref.size(), "cs_obj_num<mp_doc->m_xref.size()",
                     "Bad obj stream");
        Indirect* stream = mp_doc->m_xref[size_t(container)];
        LUM_CHECK_AS(stream && stream->GetField1() == 1 && stream->IsStream(),
                     "ind_obj_stm && ind_obj_stm->GetField1()== 1 && ind_obj_stm->IsStream()",
                     "Bad obj stream");
        LoadCompressedObjects(stream, false);
        LUM_CHECK_AS(entry.IsLoaded(), "indirect_obj.IsLoaded()", "Bad obj stream");
        return;
    }
    if (kind != 1) LUM_FAIL("Unknown object type");

    m_stream.Seek(Int64(entry.GetOffset()));
    ClearStack();
    ResetNesting();
    m_in_object = false;
    while (Parser::GetObj()) {
    }
    if (!StartsWith(GetToken(), "obj")) LUM_FAIL("Object header not found");
    LUM_CHECK_AS(m_operand_stack.size() == 2 && !m_operand_stack[0]->IsIndirect() &&
                     !m_operand_stack[1]->IsIndirect(),
                 "m_operand_stack.size() == 2", "Operator obj expects two arguments");
    // The header's numbers are not compared with the entry: an entry that points at another
    // object's header gives that object, decrypted with that header's numbers.
    m_obj_num = ToObjNum(m_operand_stack[0]);
    m_gen = UInt16(ToObjNum(m_operand_stack[1]));

    ClearStack();
    m_in_object = true;
    try {
        while (Parser::GetObj()) {
        }
    } catch (...) {
        m_in_object = false;
        throw;
    }
    m_in_object = false;

    if (StartsWith(GetToken(), "stream")) {
        // The data start behind the keyword's line: anything up to the line end is skipped.
        for (;;) {
            const int c = m_stream.Get();
            if (c < 0 || c == 0 || c == '\n') break;
            if (c == '\r') {
                if (m_stream.Peek() == '\n') m_stream.Get();
                break;
            }
        }
        LUM_CHECK(m_operand_stack.size() == 1 && m_operand_stack.back()->IsDict(),
                  "Stream expects a dictionary as an argument");
        const UInt64 data_offset = UInt64(m_stream.Tell());
        Dict* dict = static_cast<Dict*>(m_operand_stack.back());
        m_operand_stack.back() = nullptr;
        m_operand_stack.back() = new FileStream(dict, data_offset, m_obj_num, m_gen);
    } else {
        // "endobj" is not required: whatever word ends the value ends the object.
        LUM_CHECK(m_operand_stack.size() >= 1, "Operator endobj expects a single argument");
    }
    Obj* value = m_operand_stack[0];
    m_operand_stack[0] = nullptr;
    ClearStack();
    entry.SetTarget(value);
}

void ObjParser::LoadCompressedObjects(Obj* stream, bool rebuild) {
    const UInt32 container = stream->GetObjNum();
    // A stream whose own Length (or filter parameters) lie inside itself would load itself
    // again while it is being read.
    LUM_CHECK(m_streams_loading.insert(container).second, "Bad obj stream");
    struct Done {
        std::set<UInt32>& set;
        UInt32 num;
        ~Done() { set.erase(num); }
    } done{m_streams_loading, container};

    ObjStmParser parser(stream, mp_doc, rebuild);
    XRefTable& xref = mp_doc->m_xref;
    const size_t count = parser.GetCount();
    for (size_t i = 0; i < count; ++i) {
        const UInt32 num = parser.CurrentObjNum();
        LUM_CHECK_AS(num > 0, "objnum>0", "Bad obj stream");
        if (!rebuild)
            LUM_CHECK_AS(num < xref.size(), "objnum<UInt32(mp_doc->m_xref.size())",
                         "Bad obj stream");
        else
            parser.XRefResize(num);
        Indirect* entry = xref[num];
        if (!entry) {
            if (!rebuild) LUM_FAIL("Bad obj stream");
            entry = new Indirect(mp_doc, num, UInt16(i), container, 2);
            xref.Set(num, entry);
        } else if (rebuild) {
            entry->SetField1(2);
            entry->SetOffset(container);
        }
        // An entry that a newer section moved elsewhere, or that is loaded, stays as it is.
        if (!entry->IsLoaded() && entry->GetField1() == 2 && entry->GetOffset() == container) {
            entry->SetTarget(parser.GetNextObj());
            entry->SetGenField(0);
        } else {
            parser.SkipObj();
        }
    }
}

}  // namespace lum::SDF

#include "SDF/XRefParser.h"

#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/NumberConversions.h"
#include "SDF/DocImpl.h"

namespace lum::SDF {

using Common::CutTo16;
using Common::CutTo32;
using Common::CutTo64;
using Common::StartsWith;

namespace {

// Bytes at the start of the file in which the header is looked for.
constexpr size_t kHeaderSearchBytes = 1024;
// A header longer than this is no header (it would swallow the first object's bytes).
constexpr size_t kMaxHeaderBytes = 30;
// "startxref" is looked for within this many bytes of the end, so text of about 1000 bytes
// behind %%EOF is tolerated.
constexpr Int64 kStartXRefSearchFirst = -9;
constexpr Int64 kStartXRefSearchLast = -1028;
constexpr char kStartXRef[] = "startxref";

UInt64 AddOffsets(UInt64 a, UInt64 b) {
    const UInt64 sum = a + b;
    return sum < a ? ~UInt64(0) : sum;
}

bool IsAsciiDigit(UInt8 c) { return c >= '0' && c <= '9'; }

// A seek target as the filters take it; an offset beyond any file turns negative and fails.
Int64 SeekTarget(UInt64 offset) { return static_cast<Int64>(offset); }

}  // namespace

XRefParser::XRefParser(DocImpl* doc) : Parser(doc), m_reader_owner(doc->CreateInputIterator()) {
    m_reader_owner->Seek(0, Filters::Filter::e_end);
    m_file_size = static_cast<UInt64>(m_reader_owner->Tell());
    m_reader_owner->Seek(0, Filters::Filter::e_begin);
    AttachStream(m_reader_owner.get());
    m_max_made = std::min<UInt64>(Limits::kMaxXRefEntries,
                                  std::max<UInt64>(Limits::kMinXRefEntryBound, m_file_size));
}

XRefParser::~XRefParser() {
    ClearStack();
    AttachStream(nullptr);
}

void XRefParser::Parse(UInt64 start_num) {
    const bool second_pass = start_num != 0;
    m_sections_seen.clear();
    m_stream_sections_seen.clear();
    m_records_read = 0;
    m_entries_made = 0;

    const UInt64 header_offset = ReadHeader();
    const UInt64 xref_offset = AddOffsets(FindXRefOffset(), header_offset);
    mp_doc->m_last_xref_offset = xref_offset;

    m_sections_seen.insert(xref_offset);
    Obj* newest = ParseXRef(xref_offset, header_offset, true, second_pass, start_num);
    LUM_CHECK_AS(newest, "trailer1", "Could not read the trailer.");
    Obj* size = newest->FindObj(e_Size);
    if (size && size->IsNumber()) {
        const UInt64 wanted = CutTo32(size->GetNumber());
        if (wanted > mp_doc->m_xref.size()) GrowTable(wanted);
    }

    // Older sections: only their rows count (a row fills a placeholder, never a newer entry);
    // their trailers serve for Prev and XRefStm alone. Values are copied out of each trailer
    // before the next section is read, since reading it destroys the older trailer.
    Obj* current = newest;
    while (current->Find(e_Prev) != current->DictEnd()) {
        const UInt64 prev =
            AddOffsets(Common::TruncateToUInt64(current->FindObj(e_Prev)->GetNumber(), ~UInt64(0)), header_offset);
        if (current->Find(e_XRefStm) != current->DictEnd()) {
            const UInt64 stm =
                AddOffsets(Common::TruncateToUInt64(current->FindObj(e_XRefStm)->GetNumber(), ~UInt64(0)), header_offset);
            // Trailers of several revisions (and both trailers of a linearised file) may name
            // the same stream; its rows could fill nothing the second time.
            if (m_stream_sections_seen.insert(stm).second)
                ParseXRef(stm, header_offset, false, second_pass, start_num);
        }
        // A chain that comes back to a section would never end.
        LUM_CHECK(m_sections_seen.insert(prev).second,
                  "Loop in the Prev chain at offset %llu", static_cast<unsigned long long>(prev));
        Obj* trailer = ParseXRef(prev, header_offset, false, second_pass, start_num);
        LUM_CHECK(trailer, "Could not read the trailer.");
        current = trailer;
    }

    if (!second_pass && start_num != 0) {
        // The oldest table does not start at 0: read everything again with its start as the
        // shift of later subsections.
        ClearStack();
        mp_doc->m_xref.Clear();
        mp_doc->m_has_xref_stream = false;
        Parse(start_num);
    }
}

UInt64 XRefParser::ReadHeader() {
    m_stream.Seek(0);
    UInt8 buf[kHeaderSearchBytes];
    const size_t n = m_stream.Read(buf, sizeof buf);
    size_t start = 0, end = 0;
    if (!FindHeader(buf, n, kMaxHeaderBytes, start, end)) return 0;
    mp_doc->m_header.assign(reinterpret_cast<const char*>(buf + start), end - start);
    size_t d = end;
    while (d < n && !IsAsciiDigit(buf[d])) ++d;
    UInt64 first = 0;
    for (; d < n && IsAsciiDigit(buf[d]); ++d)
        first = std::min<UInt64>(first * 10 + (buf[d] - '0'), UINT32_MAX);
    mp_doc->m_first_obj_num = static_cast<UInt32>(first);
    return start;
}

UInt64 XRefParser::FindXRefOffset() {
    // The tail is read once; the search then runs backwards over it.
    const UInt64 tail_len = std::min<UInt64>(m_file_size, -kStartXRefSearchLast);
    std::vector<UInt8> tail(tail_len);
    m_stream.Seek(SeekTarget(m_file_size - tail_len));
    const size_t got = m_stream.Read(tail.data(), tail.size());
    tail.resize(got);
    const Int64 size = static_cast<Int64>(tail.size());
    const size_t kw_len = std::strlen(kStartXRef);

    for (Int64 p = kStartXRefSearchFirst; p >= kStartXRefSearchLast; --p) {
        const Int64 at = size + p;
        if (at < 0) {
            // Before the start of the file: the filter refuses the seek with its own failure.
            m_stream.Seek(p, Filters::Filter::e_end);
            break;
        }
        if (at + 1 + static_cast<Int64>(kw_len) > size) continue;
        const UInt8 sep = tail[at];
        if (!IsWhite(sep) && !IsDelimiter(sep)) continue;
        if (std::memcmp(&tail[at + 1], kStartXRef, kw_len) != 0) continue;

        m_stream.Seek(SeekTarget(m_file_size - tail.size() + at + 1 + kw_len));
        ClearStack();
        ResetNesting();
        GetObj();
        LUM_CHECK(m_operand_stack.size() == 1, "startxref expects a single argument");
        return Common::TruncateToUInt64(m_operand_stack[0]->GetNumber(), ~UInt64(0));
    }
    LUM_FAIL("PDF startxref not found. The file is not a valid PDF document.");
}

Obj* XRefParser::ParseXRef(UInt64 offset, UInt64 header_offset, bool first_section,
                           bool second_pass, UInt64& start_num) {
    m_stream.Seek(SeekTarget(offset));
    SkipWhiteSpaceAndComments();
    if (m_stream.Peek() == 'x') {
        LUM_CHECK(m_stream.Get() == 'x' && m_stream.Get() == 'r' && m_stream.Get() == 'e' &&
                      m_stream.Get() == 'f',
                  "xref table not found");
        return ParseXRef(TableSection{}, header_offset, first_section, second_pass, start_num);
    }
    return ParseXRef(StreamSection{}, header_offset, first_section);
}

Obj* XRefParser::ParseXRef(TableSection, UInt64 header_offset, bool first_section,
                           bool second_pass, UInt64& start_num) {
    ClearStack();
    ResetNesting();
    if (!GetObj()) {
        EnsureEntryZero();
        return nullptr;
    }
    bool first_subsection = true;
    for (;;) {
        while (GetObj()) {
        }
        const char* word = GetToken();
        // "0 0 trailer" and a head without rows end the subsections here.
        if (word[0] == 't' || word[0] == '\0') break;
        LUM_CHECK(m_operand_stack.size() == 4, "Bad xref");
        const bool first_free = word[0] == 'f';
        UInt64 sect_start = CutTo64(m_operand_stack[0]->GetNumber());
        UInt64 sect_end = sect_start + CutTo64(m_operand_stack[1]->GetNumber());
        LUM_CHECK(sect_start <= sect_end, "Bad xref");
        if (second_pass) {
            if (start_num < sect_start) {
                sect_start -= start_num;
                sect_end -= start_num;
            }
        } else if (first_subsection) {
            start_num = sect_start;
        }
        first_subsection = false;

        GrowTable(sect_end);
        if (sect_start < sect_end)
            ApplyRow(sect_start, Common::TruncateToUInt64(m_operand_stack[2]->GetNumber(), ~UInt64(0)),
                     CutTo64(m_operand_stack[3]->GetNumber()), first_free, header_offset);
        for (UInt64 n = sect_start + 1; n < sect_end; ++n) {
            ClearStack();
            while (GetObj()) {
            }
            const char* type = GetToken();
            LUM_CHECK_AS((type[0] == 'f' || type[0] == 'n') && type[1] == '\0',
                         "(opr_str[0] == 'f' || opr_str[0] == 'n') && opr_str[1] == '\\0'",
                         "Cross reference table is corrupt.");
            LUM_CHECK(m_operand_stack.size() == 2, "Cross reference table is corrupt.");
            ApplyRow(n, Common::TruncateToUInt64(m_operand_stack[0]->GetNumber(), ~UInt64(0)),
                     CutTo64(m_operand_stack[1]->GetNumber()), type[0] == 'f', header_offset);
        }
        ClearStack();
        if (!GetObj()) break;
    }

    EnsureEntryZero();
    if (!StartsWith(GetToken(), "trailer")) LUM_FAIL("Missing trailer.");
    ClearStack();
    ResetNesting();
    GetObj();
    LUM_CHECK(m_operand_stack.size() == 1 && m_operand_stack[0]->IsDict(),
              "Operator trailer expects a single dictionary");
    if (!first_section) return m_operand_stack[0];

    Obj* trailer = PopObjNoDelete();
    Indirect* zero = mp_doc->m_xref[0];
    zero->SetTarget(trailer);
    if (zero->GetField1() != 0) zero->SetField1(0);
    return trailer;
}

Obj* XRefParser::ParseXRef(StreamSection, UInt64 header_offset, bool first_section) {
    ClearStack();
    ResetNesting();
    while (GetObj()) {
    }
    if (!StartsWith(GetToken(), "obj")) LUM_FAIL("Object header not found");
    LUM_CHECK(m_operand_stack.size() == 2, "Operator obj expects two arguments");
    const UInt32 num = CutTo32(m_operand_stack[0]->GetNumber());
    const UInt16 gen = CutTo16(m_operand_stack[1]->GetNumber());

    ClearStack();
    ResetNesting();
    while (GetObj()) {
    }
    LUM_CHECK_AS(std::strcmp(GetToken(), "stream") == 0, "strcmp(opr_str, \"stream\") == 0",
                 "PDF 1.5 XRef table is not a stream object");
    if (m_stream.Get() == '\r' && m_stream.Peek() == '\n') m_stream.Get();
    Obj* dict = m_operand_stack.size() == 1 ? m_operand_stack.back() : nullptr;
    LUM_CHECK(m_operand_stack.size() == 1 && dict->IsDict(),
              "Stream expects a dictionary as an argument");
    Dict* direct = dynamic_cast<Dict*>(dict);
    LUM_CHECK(direct, "Stream expects a dictionary as an argument");
    auto* stream =
        new FileStream(direct, static_cast<UInt64>(m_stream.Tell()), num, gen);
    m_operand_stack.back() = stream;

    const UInt32 size = CutTo32(stream->Get(e_Size)->second->GetNumber());

    // While it is decoded the stream needs an owner to reach the document through; a stream
    // of an older section gets a temporary one, which must not outlive this function.
    std::unique_ptr<Indirect> temp_owner;
    if (first_section) {
        GrowTable(std::max<UInt64>(size, 1));
        Indirect* zero = mp_doc->m_xref[0];
        if (!zero) {
            zero = MakeEntry(0, 65535, Indirect::kPlaceholderOffset, 0);
        } else {
            zero->SetOffset(Indirect::kPlaceholderOffset);
            zero->SetGenField(65535);
            zero->SetField1(0);
        }
        zero->SetTarget(PopObjNoDelete());
        zero->SetModifiedFlag(false);
        mp_doc->m_has_xref_stream = true;
    } else {
        if (size > mp_doc->m_xref.size()) GrowTable(size);
        temp_owner.reset(new Indirect(mp_doc, 0, 65535, Indirect::kPlaceholderOffset, 0));
        AssocIndirectVst(temp_owner.get()).Walk(*stream);
    }
    struct OwnerReset {
        Indirect* temp;
        Obj* stream;
        ~OwnerReset() {
            if (temp) AssocIndirectVst(nullptr).Walk(*stream);
        }
    } owner_reset{temp_owner.get(), stream};

    Obj* index = stream->FindObj(e_Index);
    Obj* w = stream->Get(e_W)->second;
    const UInt32 w1 = CutTo32(w->GetAt(0)->GetNumber());
    const UInt32 w2 = CutTo32(w->GetAt(1)->GetNumber());
    const UInt32 w3 = CutTo32(w->GetAt(2)->GetNumber());

    std::unique_ptr<Filters::Filter> decoded = stream->GetDecodedStream();
    Filters::FilterReader reader(decoded.get());
    if (index) {
        const UInt64 n = index->Size();
        for (UInt64 i = 0; i < n; i += 2) {
            const UInt64 start = CutTo64(index->GetAt(static_cast<UInt32>(i))->GetNumber());
            const UInt64 count =
                CutTo64(index->GetAt(static_cast<UInt32>(i + 1))->GetNumber());
            ReadXRefStream(reader, start, count, w1, w2, w3, header_offset);
        }
    } else {
        ReadXRefStream(reader, 0, size, w1, w2, w3, header_offset);
    }
    reader.AttachFilter(nullptr);
    return stream;
}

void XRefParser::ReadXRefStream(Filters::FilterReader& reader, UInt64 start, UInt64 count,
                                UInt32 w1, UInt32 w2, UInt32 w3, UInt64 header_offset) {
    LUM_CHECK_AS(w1 < 64 && w2 < 64 && w3 < 64, "field1_sz<64 && field2_sz<64 && field3_sz<64",
                 "Bad xref");
    const UInt64 end = start + count;
    LUM_CHECK(start <= end, "Bad xref");
    // Ranges may overlap, so the table bound alone does not bound the work.
    m_records_read += count;
    LUM_CHECK(m_records_read <= Limits::kMaxXRefEntries,
              "Cross-reference streams have too many records");
    GrowTable(end);

    XRefTable& xref = mp_doc->m_xref;
    for (UInt64 n = start; n < end; ++n) {
        int kind = 1;
        bool at_end;
        if (w1 > 0) {
            for (UInt32 k = 1; k < w1; ++k) reader.Get();
            kind = reader.Get();
            at_end = kind < 0;
        } else {
            at_end = reader.Peek() < 0;
        }
        Indirect* entry = xref[n];
        if (at_end || kind >= 3) {
            // A kind we don't know leaves the reader inside the record: later records are
            // read out of step, as their writer meant nothing else.
            if (!entry) MakeEntry(n, 0, 0, 1)->SetModifiedFlag(true);
            continue;
        }
        UInt64 field2 = 0;
        for (UInt32 k = 0; k < w2; ++k) field2 = (field2 << 8) | UInt64(std::max(reader.Get(), 0));
        if (kind == 1 && w2 != 0) field2 = AddOffsets(field2, header_offset);
        UInt32 field3 = 0;
        for (UInt32 k = 0; k < w3; ++k) field3 = (field3 << 8) | UInt32(std::max(reader.Get(), 0));

        if (!entry) {
            MakeEntry(n, static_cast<UInt16>(field3), field2, static_cast<UInt8>(kind));
        } else if (entry->GetOffset() == Indirect::kPlaceholderOffset) {
            entry->SetField1(static_cast<UInt8>(kind));
            entry->SetOffset(field2);
            entry->SetGenField(static_cast<UInt16>(field3));
        }
    }
}

void XRefParser::ApplyRow(UInt64 n, UInt64 offset, UInt64 gen, bool free,
                          UInt64 header_offset) {
    // Writers put offset 0 for objects they dropped; only the object right behind the header
    // can really start there.
    if (!free && offset == 0 && n != mp_doc->m_first_obj_num) free = true;
    const UInt64 at = AddOffsets(offset, header_offset);
    const UInt8 kind = free ? 0 : 1;
    Indirect* entry = mp_doc->m_xref[n];
    if (!entry) {
        MakeEntry(n, static_cast<UInt16>(gen), at, kind);
    } else if (entry->GetOffset() == Indirect::kPlaceholderOffset) {
        entry->SetOffset(at);
        entry->SetGenField(static_cast<UInt16>(gen));
        entry->SetField1(kind);
    }
}

void XRefParser::GrowTable(UInt64 n) {
    LUM_CHECK(n <= Limits::kMaxXRefEntries, "Cross-reference table too large (%llu entries)",
              static_cast<unsigned long long>(n));
    if (n > mp_doc->m_xref.size()) mp_doc->m_xref.Grow(n);
}

Indirect* XRefParser::MakeEntry(UInt64 n, UInt16 gen, UInt64 offset, UInt8 kind) {
    LUM_CHECK(++m_entries_made <= m_max_made,
              "More cross-reference entries than the file can hold (%llu)",
              static_cast<unsigned long long>(m_max_made));
    auto* entry = new Indirect(mp_doc, static_cast<UInt32>(n), gen, offset, kind);
    mp_doc->m_xref.Set(n, entry);
    return entry;
}

void XRefParser::EnsureEntryZero() {
    XRefTable& xref = mp_doc->m_xref;
    if (xref.empty()) xref.Grow(1);
    if (!xref[0]) MakeEntry(0, 65535, Indirect::kPlaceholderOffset, 0);
}

bool XRefParser::ContainerOperator(const char*) {
    const size_t size = m_operand_stack.size();
    LUM_CHECK_AS(size >= 2, "stack_size>=2", "R takes 2 args");
    Obj* num_obj = m_operand_stack[size - 2];
    Obj* gen_obj = m_operand_stack[size - 1];
    // A reference as operand would be loaded to answer GetNumber: not while the table is
    // being read.
    LUM_CHECK(!num_obj->IsIndirect() && !gen_obj->IsIndirect(), "R takes 2 args");
    const UInt64 num = CutTo64(num_obj->GetNumber());
    const UInt16 gen = CutTo16(gen_obj->GetNumber());
    PopObj();
    PopObj();
    LUM_CHECK(num < Limits::kMaxXRefEntries, "Cross-reference table too large (%llu entries)",
              static_cast<unsigned long long>(num));
    GrowTable(num + 1);
    Indirect* entry = mp_doc->m_xref[num];
    if (!entry) entry = MakeEntry(num, gen, Indirect::kPlaceholderOffset, 0);
    Push(entry);
    return true;
}

}  // namespace lum::SDF

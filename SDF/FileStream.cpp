// Stream data: where it lies, how long it is, and the decoders on top. A file stream never
// holds file data; every read makes a new reader on the document's input, so streams can be
// read on several threads at once.
#include <cmath>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Common/NumberConversions.h"
#include "Filters/ExtBufInputFilter.h"
#include "Filters/FilterReader.h"
#include "SDF/DocImpl.h"
#include "SDF/KeywordScanner.h"
#include "SDF/Obj.h"
#include "SDF/Parser.h"
#include "SDF/SecurityHandler.h"
#include "SDF/StreamChain.h"

namespace lum::SDF {

namespace {

// A Length as the file gives it: negative lengths read as empty.
UInt64 LengthFromNumber(double value) { return Common::TruncateToUInt64(value, 0); }

}  // namespace

FileStream::FileStream(Dict* dict, UInt64 data_offset, UInt32 obj_num, UInt16 gen)
    : Stream(dict), m_data_offset(data_offset), m_obj_num(obj_num), m_gen(gen) {}

FileStream::FileStream(Dict* dict, std::vector<UInt8>&& data)
    : Stream(dict), m_mem_data(std::move(data)), m_has_mem_data(true) {}

FileStream::~FileStream() = default;

Obj* FileStream::Clone() const { return GetOwner(); }

void FileStream::SetStreamData(const UInt8* bytes, size_t size,
                               std::unique_ptr<Filters::Filter> filter_chain) {
    // The bytes are taken as already coded by `filter_chain`'s names, which go to Filter.
    m_mem_data.assign(bytes, bytes + size);
    m_has_mem_data = true;
    Erase(e_Filter);
    Erase(e_DecodeParms);
    if (filter_chain) {
        auto* names = new Array();
        for (Filters::Filter* f = filter_chain.get(); f; f = f->GetAttachedFilter())
            names->PushBack(new Name(f->GetDecodeName()));
        if (names->Size() > 0)
            Put(e_Filter, names);
        else
            delete names;
    }
    PutNumber(e_Length, double(size));
}

UInt64 FileStream::CalcStmLength(Filters::Filter& input) {
    Filters::FilterReader r(&input);
    const UInt64 start = static_cast<UInt64>(r.Tell());
    StreamEnd end;
    const int byte = SkipPastStreamEnd(r, end) ? 0 : EOF;
    LUM_CHECK(byte != EOF, "Unexpected end of stream");
    // The rule counts from the data's start to the "endobj" (white space behind "endstream"
    // included), less the keyword and one end-of-line byte: a line end in front of the
    // keyword stays in the data.
    const UInt64 to_endobj = end.at_endobj - start;
    const UInt64 length = to_endobj >= 10 ? to_endobj - 10 : 0;
    PutNumber(e_Length, double(length));
    return length;
}

std::unique_ptr<Filters::Filter> FileStream::GetRawStream(bool decrypt) {
    if (m_has_mem_data)
        return std::make_unique<Filters::ExtBufInputFilter>(m_mem_data.data(), m_mem_data.size());
    Indirect* owner = GetOwner();
    DocImpl* d = owner ? owner->GetDocImpl() : nullptr;
    LUM_CHECK(d, "Stm -> NULL doc");
    // Streams made by a program live in the document's temp file, which reading never makes.
    LUM_CHECK(!m_is_new, "Stm -> NULL doc");
    std::unique_ptr<Filters::Filter> reader = d->CreateInputIterator();
    reader->Seek(Int64(m_data_offset), Filters::Filter::e_begin);

    UInt64 length;
    Obj* len = FindObj(e_Length);
    if (len && len->IsNumber()) {
        length = LengthFromNumber(len->GetNumber());
    } else {
        length = CalcStmLength(*reader);
        reader->Seek(Int64(m_data_offset), Filters::Filter::e_begin);
    }
    reader->SetStreamLength(size_t(std::min<UInt64>(length, SIZE_MAX)));

    // The one place where stream data meets decryption, with the numbers of the object's
    // header.
    if (decrypt && !m_is_new) {
        if (SecurityHandler* crypt = d->GetCryptHandler())
            reader = crypt->CreateDecryptFilter(std::move(reader), m_obj_num, m_gen);
    }
    return reader;
}

UInt64 FileStream::GetRawStreamLength() {
    Obj* len = FindObj(e_Length);
    if (len && len->IsNumber()) return LengthFromNumber(len->GetNumber());
    GetRawStream(false);
    return LengthFromNumber(Get(e_Length)->second->GetNumber());
}

std::unique_ptr<Filters::Filter> FileStream::GetDecodedStream() { return GetDecodedStream(false); }

std::unique_ptr<Filters::Filter> FileStream::GetDecodedStream(bool leave_last) {
    std::unique_ptr<Filters::Filter> chain = GetRawStream(true);
    Obj* filter = FindObj(e_Filter);
    if (!filter) return chain;
    Obj* parms = FindObj(e_DecodeParms);
    if (!filter->IsArray()) {
        if (leave_last) return chain;
        return StreamCreateDecodeFilter(filter, parms, std::move(chain), this);
    }
    UInt64 n = filter->Size();
    if (leave_last && n > 0) --n;
    LUM_CHECK(n <= Limits::kMaxFilterStages, "Too many filters in a stream");
    for (UInt32 i = 0; i < n; ++i) {
        Obj* params = nullptr;
        if (parms) {
            try {
                params = parms->GetAt(i);
            } catch (const Common::Exception&) {
                params = nullptr;  // too short, or no array: no parameters
            }
        }
        chain = StreamCreateDecodeFilter(filter->GetAt(i), params, std::move(chain), this);
    }
    return chain;
}

}  // namespace lum::SDF

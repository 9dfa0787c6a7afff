// Inline images: BI, key and value pairs, ID, data, EI. The end of the data is never searched
// for (image bytes may hold "EI"): its size follows from the dictionary, and with a filter the
// decoders read the encoded data up to their own end mark.
#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/Filter.h"
#include "Filters/FilterReader.h"
#include "PDF/ElementReaderImpl.h"
#include "SDF/Obj.h"
#include "SDF/StreamChain.h"

namespace lum::PDF {

namespace {

// The content stream seen through a decoder chain that must not own it: every window
// operation goes to the borrowed filter, so what the decoders leave unread stays there.
class BorrowedInput final : public Filters::Filter {
public:
    explicit BorrowedInput(Filters::Filter* source) : mp_source(source) {}
    const char* GetName() const override { return "BorrowedInput"; }
    UInt8* Begin() override { return mp_source->Begin(); }
    size_t Size() override { return mp_source->Size(); }
    void Consume(size_t n) override {
        mp_source->Consume(n);
        m_count += n;
    }
    size_t Count() override { return m_count; }
    size_t SetCount(size_t count) override {
        const size_t old = m_count;
        m_count = count;
        return old;
    }
    bool IsInputFilter() override { return true; }
    void Reset() override { m_count = 0; }

protected:
    size_t Process() override { return mp_source->Size(); }

private:
    Filters::Filter* mp_source;
    size_t m_count = 0;
};

// Every stage hands what it read, and only that, back to the stage below it, down to the
// content stream: a decoder that stopped at its end mark leaves the rest of the content there.
void HandBack(Filters::Filter& chain) {
    for (Filters::Filter* f = &chain; f; f = f->GetAttachedFilter()) f->Flush();
}

bool Is(const char* key, const char* a, const char* b = nullptr) {
    return std::strcmp(key, a) == 0 || (b && std::strcmp(key, b) == 0);
}

int ImageInt(SDF::Obj* v) {
    const double d = v->GetNumber();
    if (!(d == d)) return -1;
    return int(std::clamp(d, -1.0, 2147483647.0));
}

// Components of a colour space family named in a resource (or by its first array entry).
int ResourceComponents(SDF::Obj* cs) {
    SDF::Obj* family = cs->IsArray() ? cs->GetAt(0) : cs;
    if (!family->IsName()) return 1;
    const char* name = family->GetName();
    if (Is(name, "DeviceGray") || Is(name, "Indexed") || Is(name, "CalGray") || Is(name, "Separation"))
        return 1;
    if (Is(name, "DeviceRGB") || Is(name, "CalRGB") || Is(name, "Lab")) return 3;
    if (Is(name, "DeviceCMYK")) return 4;
    if (Is(name, "ICCBased") && cs->IsArray()) {
        SDF::Obj* profile = cs->GetAt(1);
        return int(std::clamp(profile->FindNumber(SDF::e_N, 1), 1.0, 32.0));
    }
    if (Is(name, "DeviceN") && cs->IsArray()) return int(std::min<UInt64>(cs->GetAt(1)->Size(), 32));
    return 1;
}

// Reads up to `size` bytes, keeping those below the bound in `out`; answers the bytes read.
UInt64 ReadData(Filters::FilterReader& reader, UInt64 size, std::vector<UInt8>& out) {
    UInt64 done = 0;
    while (done < size) {
        if (!reader.Refill()) break;
        const UInt64 n = std::min<UInt64>(size - done, reader.WindowSize());
        const UInt64 keep = std::min<UInt64>(n, UInt64(Limits::kMaxInlineImageBytes) - std::min<UInt64>(
                                                        out.size(), Limits::kMaxInlineImageBytes));
        out.insert(out.end(), reader.WindowBegin(), reader.WindowBegin() + keep);
        reader.Skip(size_t(n));
        done += n;
    }
    return done;
}

}  // namespace

bool ElementReaderImpl::OpInlineImage() {
    ElementBuilderImpl& e = *mp_element;
    std::vector<SDF::Obj*>& st = m_operand_stack;
    const size_t sz = st.size();
    int width = -1, height = -1, bits = -1;
    size_t cs_at = sz, decode_at = sz;
    SDF::Obj* filter = nullptr;
    SDF::Obj* params = nullptr;
    bool mask = false, interpolate = false;
    GState::RenderingIntent intent = e.State().GetRenderingIntent();

    for (size_t index = 0; index < sz; index += 2) {
        if (index + 1 == sz)
            throw Common::Exception("index != sz", __LINE__, __FILE__, LUM_FUNCTION,
                                    "Invalid inline image dictionary.");
        SDF::Obj* key_obj = st[index];
        SDF::Obj* v = st[index + 1];
        if (!key_obj->IsName()) continue;
        const char* key = key_obj->GetName();
        if (Is(key, "W", "Width")) width = ImageInt(v);
        else if (Is(key, "H", "Height")) height = ImageInt(v);
        else if (Is(key, "BPC", "BitsPerComponent")) bits = ImageInt(v);
        else if (Is(key, "CS", "ColorSpace")) cs_at = index + 1;
        else if (Is(key, "D", "Decode")) decode_at = index + 1;
        else if (Is(key, "DP", "DecodeParms")) params = v;
        else if (Is(key, "F", "Filter")) filter = v;
        else if (Is(key, "IM", "ImageMask")) mask = v->GetBool();
        else if (Is(key, "I", "Interpolate")) interpolate = v->GetBool();
        else if (Is(key, "Intent") && v->IsName()) intent = GState::GetRenderingIntentType(v->GetName());
    }
    if (mask) bits = 1;
    LUM_CHECK(width >= 0, "Inline image is missing W");
    LUM_CHECK(height >= 0, "Inline image is missing H");
    LUM_CHECK(bits > 0, "Inline image is missing BPC");

    int components = 3;  // no colour space at all reads as RGB
    if (mask) {
        components = 1;
    } else if (cs_at < sz) {
        SDF::Obj* cs = st[cs_at];
        SDF::Obj* family = cs->IsArray() ? cs->GetAt(0) : cs;
        const char* name = family->GetName();
        if (Is(name, "G", "DeviceGray") || Is(name, "I", "Indexed"))
            components = 1;
        else if (Is(name, "RGB", "DeviceRGB"))
            components = 3;
        else if (Is(name, "CMYK", "DeviceCMYK"))
            components = 4;
        else
            components = ResourceComponents(m_resources.GetColorSpace(
                *static_cast<const SDF::Name*>(family->GetDirect()), true));
    }

    // Decoded size, saturated: W, H and BPC come from the content and may be absurd.
    const UInt64 row = (UInt64(width) * UInt64(bits) * UInt64(components) + 7) / 8;
    const UInt64 size = height == 0 ? 0
                        : row > (UInt64(1) << 62) / UInt64(height) ? UInt64(1) << 62
                                                                 : row * UInt64(height);

    // The byte behind ID, then the content stream itself, where the parser stands.
    Filters::FilterReader& parser_reader = GetReader();
    parser_reader.Get();
    parser_reader.FlushReader();
    Filters::Filter* content = m_streams.back().get();
    e.m_inline_data.clear();
    const UInt64 limited = std::min<UInt64>(size, Limits::kMaxInlineImageBytes);

    if (!filter) {
        Filters::FilterReader reader(content);
        ReadData(reader, size, e.m_inline_data);
        reader.FlushReader();
    } else {
        std::unique_ptr<Filters::Filter> chain = std::make_unique<BorrowedInput>(content);
        auto add = [&chain](SDF::Obj* name, SDF::Obj* parms) {
            if (Is(name->GetName(), "JBIG2Decode"))
                LUM_FAIL("JBIG2 filter is not allowed for inline images.");
            chain = SDF::StreamCreateDecodeFilter(name, parms, std::move(chain), nullptr);
        };
        if (filter->IsArray()) {
            const UInt64 n = filter->Size();
            if (params && !params->IsNull())
                LUM_CHECK(params->IsArray() && params->Size() == n, "DP doesn't match filters");
            for (UInt32 i = 0; i < n && i < Limits::kMaxFilterStages; ++i)
                add(filter->GetAt(i), params ? params->GetAt(i) : nullptr);
        } else {
            add(filter, params);
        }
        Filters::FilterReader reader(chain.get());
        try {
            const UInt64 got = ReadData(reader, limited, e.m_inline_data);
            // Drain to the decoders' own end mark, so the encoded data is consumed whole.
            std::vector<UInt8> none;
            if (got == limited) ReadData(reader, Limits::kMaxInlineImageBytes - got, none);
            reader.FlushReader();
            HandBack(*chain);
        } catch (...) {
            reader.FlushReader();
            HandBack(*chain);
            throw;
        }
    }

    // Behind the data: one white-space or delimiter byte, or "E" and the byte behind it, or "I".
    const int next = parser_reader.Peek();
    if (next < 0 || SDF::Parser::IsWhite(next) || SDF::Parser::IsDelimiter(next)) {
        parser_reader.Get();
    } else if (next == 'E') {
        parser_reader.Get();
        parser_reader.Get();
    } else if (next == 'I') {
        parser_reader.Get();
    }

    e.ReleaseImage();
    e.m_image_width = width;
    e.m_image_height = height;
    e.m_image_bits = bits;
    e.m_image_components = components;
    e.m_image_owned = true;
    if (cs_at < sz) std::swap(e.mp_image_cs, st[cs_at]);
    if (decode_at < sz) std::swap(e.mp_decode, st[decode_at]);
    e.m_image_mask = mask;
    e.m_image_interpolate = interpolate;
    e.m_image_intent = intent;
    e.Finish(Element::e_inline_image);
    return false;
}

}  // namespace lum::PDF

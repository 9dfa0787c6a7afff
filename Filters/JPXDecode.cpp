#include "Filters/JPXDecode.h"

#include <vector>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "Filters/FilterReader.h"
#include "Filters/JPXDecodeShapes.h"

namespace lum::Filters {

namespace {

// The coded data, whole: OpenJPEG seeks in them. Bounded like the memory of a codec.
std::vector<UInt8> ReadCoded(Filter* f) {
    std::vector<UInt8> data;
    if (!f) return data;
    FilterReader reader(f);
    constexpr size_t kStep = 65536;
    for (;;) {
        LUM_CHECK(data.size() <= Limits::kMaxImageDecoderMemory,
                  "JPXDecode: An error occurred reading the image");
        const size_t at = data.size();
        data.resize(at + kStep);
        const size_t n = reader.Read(data.data() + at, kStep);
        data.resize(at + n);
        if (n < kStep) return data;
    }
}

}  // namespace

JPXDecode::JPXDecode(std::unique_ptr<Filter> input, const JPXParams& params)
    : BufFilter(std::move(input), 0, true), m_params(params) {}

JPXDecode::~JPXDecode() = default;

size_t JPXDecode::Process() {
    if (m_end) return 0;
    // A broken JPEG 2000 stream looks like an empty one: nothing that fails here leaves.
    try {
        if (!mp_decoder) {
            std::vector<UInt8> data = ReadCoded(m_attached.get());
            if (m_params.stripe || m_params.components == 1)
                mp_decoder = std::make_unique<JP2StripeImpl>(std::move(data), m_params.components,
                                                             m_params.bits, m_params.own_colors);
            else
                mp_decoder = std::make_unique<JP2CompImpl>(std::move(data), m_params.components);
        }
        if (!mp_decoder->NextBand()) {
            m_end = true;
            return 0;
        }
        if (mp_decoder->IsLastBand()) m_end = true;
        // The window is the decoder's band buffer; the last band may be shorter.
        m_buf_begin = const_cast<UInt8*>(mp_decoder->Band());
        m_buf_size = mp_decoder->BandBytes();
        m_buf_end = m_buf_begin + m_buf_size;
        return m_buf_size;
    } catch (...) {
        m_end = true;
        return 0;
    }
}

void JPXDecode::Reset() {
    BufFilter::Reset();
    // The coded data were read: an image already opened can't be read again.
    m_end = mp_decoder != nullptr;
}

size_t JPXDecode::GetWidth() const { return mp_decoder ? mp_decoder->Width() : 0; }
size_t JPXDecode::GetHeight() const { return mp_decoder ? mp_decoder->Height() : 0; }
int JPXDecode::GetComponents() const { return mp_decoder ? mp_decoder->Components() : 0; }
int JPXDecode::GetBits() const { return mp_decoder ? mp_decoder->Bits() : 0; }

bool JPXDecode::ReadHeader(Filter& coded, UInt32& width, UInt32& height, int& components,
                           int& bits) {
    try {
        return JP2Codec::ReadHeader(ReadCoded(&coded), width, height, components, bits);
    } catch (...) {
        return false;
    }
}

}  // namespace lum::Filters

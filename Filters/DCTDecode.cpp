#include "Filters/DCTDecode.h"

// jpeglib.h needs FILE and size_t declared first.
#include <csetjmp>
#include <cstdio>
#include <cstring>

#include <jpeglib.h>

#include "Common/Exception.h"
#include "Common/Limits.h"

namespace lum::Filters {

// libjpeg and everything it calls back into. libjpeg reports a fatal error by calling
// error_exit, which must not return: it jumps back to the setjmp of the DCTDecode function
// that made the call, which raises. Nothing with a destructor lives between the two.
struct DCTDecode::Codec {
    jpeg_decompress_struct cinfo;
    jpeg_error_mgr err;
    jpeg_source_mgr src;
    std::jmp_buf jump;
    char message[JMSG_LENGTH_MAX] = {};
    Filter* input = nullptr;
    size_t window = 0;  // bytes of the input's window that libjpeg is reading
    bool created = false;

    static Codec& Of(j_common_ptr cinfo) { return *static_cast<Codec*>(cinfo->client_data); }
    static Codec& Of(j_decompress_ptr cinfo) { return *static_cast<Codec*>(cinfo->client_data); }

    static void ErrorExit(j_common_ptr cinfo) {
        Codec& c = Of(cinfo);
        (*cinfo->err->format_message)(cinfo, c.message);
        std::longjmp(c.jump, 1);
    }
    // Warnings stay with the library: nothing is printed.
    static void OutputMessage(j_common_ptr) {}

    static void InitSource(j_decompress_ptr) {}

    static boolean FillInputBuffer(j_decompress_ptr cinfo) {
        // The end of the data: a made-up end-of-image marker, so that a truncated image
        // ends as a short one, filled in by libjpeg.
        static const JOCTET kEndOfImage[2] = {0xFF, JPEG_EOI};
        Codec& c = Of(cinfo);
        if (c.window) c.input->Consume(c.window);
        c.window = 0;
        const size_t n = c.input ? c.input->Size() : 0;
        if (n == 0) {
            c.src.next_input_byte = kEndOfImage;
            c.src.bytes_in_buffer = sizeof kEndOfImage;
            return TRUE;
        }
        c.src.next_input_byte = c.input->Begin();
        c.src.bytes_in_buffer = n;
        c.window = n;
        return TRUE;
    }

    static void SkipInputData(j_decompress_ptr cinfo, long num_bytes) {
        Codec& c = Of(cinfo);
        if (num_bytes <= 0) return;
        while (size_t(num_bytes) > c.src.bytes_in_buffer) {
            num_bytes -= long(c.src.bytes_in_buffer);
            FillInputBuffer(cinfo);
        }
        c.src.next_input_byte += num_bytes;
        c.src.bytes_in_buffer -= size_t(num_bytes);
    }

    static void TermSource(j_decompress_ptr cinfo) { Of(cinfo).GiveBack(); }

    // Hands the input the bytes libjpeg read of its window; the rest stays unread there.
    void GiveBack() {
        if (window && input) input->Consume(window - src.bytes_in_buffer);
        window = 0;
        src.next_input_byte = nullptr;
        src.bytes_in_buffer = 0;
    }
};

DCTDecode::DCTDecode(std::unique_ptr<Filter> input, Int64 color_transform)
    : BufFilter(std::move(input), 0, true),
      mp_codec(std::make_unique<Codec>()),
      m_color_transform(color_transform) {
    Codec& c = *mp_codec;
    c.cinfo.err = jpeg_std_error(&c.err);
    c.err.error_exit = &Codec::ErrorExit;
    c.err.output_message = &Codec::OutputMessage;
    c.cinfo.client_data = &c;
    if (setjmp(c.jump)) {
        m_end = true;
        LUM_FAIL("%s", c.message);
    }
    jpeg_create_decompress(&c.cinfo);
    c.created = true;
    // Beyond this libjpeg fails (it has no backing store) instead of allocating: a
    // progressive image keeps all its coefficients, which a hostile header makes huge.
    c.cinfo.mem->max_memory_to_use = long(Limits::kMaxImageDecoderMemory);
    c.src.init_source = &Codec::InitSource;
    c.src.fill_input_buffer = &Codec::FillInputBuffer;
    c.src.skip_input_data = &Codec::SkipInputData;
    c.src.resync_to_restart = &jpeg_resync_to_restart;
    c.src.term_source = &Codec::TermSource;
    c.cinfo.src = &c.src;
}

DCTDecode::~DCTDecode() {
    Codec& c = *mp_codec;
    if (!c.created) return;
    c.GiveBack();
    jpeg_destroy_decompress(&c.cinfo);
}

void DCTDecode::Initialize() {
    Codec& c = *mp_codec;
    c.input = m_attached.get();
    m_started = true;
    if (setjmp(c.jump)) {
        m_end = true;
        LUM_FAIL("%s", c.message);
    }
    // Garbage ahead of the start-of-image marker, within the first window, is passed over.
    if (c.input) {
        const size_t n = c.input->Size();
        const UInt8* p = c.input->Begin();
        for (size_t i = 0; i + 1 < n; ++i) {
            if (p[i] == 0xFF && p[i + 1] == 0xD8) {
                c.input->Consume(i);
                break;
            }
        }
    }
    jpeg_read_header(&c.cinfo, TRUE);
    if (!c.cinfo.saw_Adobe_marker) {
        const int components = c.cinfo.num_components;
        Int64 transform = m_color_transform;
        if (transform < 0) transform = components == 3 ? 1 : 0;
        if (components == 3) {
            c.cinfo.jpeg_color_space = transform ? JCS_YCbCr : JCS_RGB;
            c.cinfo.out_color_space = JCS_RGB;
        } else if (components == 4) {
            c.cinfo.jpeg_color_space = transform ? JCS_YCCK : JCS_CMYK;
            c.cinfo.out_color_space = JCS_CMYK;
        }
    }
    c.cinfo.dct_method = JDCT_ISLOW;
    jpeg_start_decompress(&c.cinfo);
    AllocateBuffer(size_t(c.cinfo.output_width) * size_t(c.cinfo.output_components));
}

size_t DCTDecode::Process() {
    if (m_end) return 0;
    if (!m_started) Initialize();
    Codec& c = *mp_codec;
    if (setjmp(c.jump)) {
        m_end = true;
        LUM_FAIL("%s", c.message);
    }
    if (c.cinfo.output_scanline < c.cinfo.output_height) {
        JSAMPROW row = m_buf_begin;
        if (jpeg_read_scanlines(&c.cinfo, &row, 1) == 1) return m_buf_size;
    }
    jpeg_finish_decompress(&c.cinfo);
    m_end = true;
    return 0;
}

void DCTDecode::Reset() {
    BufFilter::Reset();
    Codec& c = *mp_codec;
    if (m_started && c.created) {
        c.GiveBack();
        jpeg_abort_decompress(&c.cinfo);
    }
    m_started = false;
    m_end = false;
}

size_t DCTDecode::GetWidth() const { return m_started ? mp_codec->cinfo.output_width : 0; }
size_t DCTDecode::GetHeight() const { return m_started ? mp_codec->cinfo.output_height : 0; }
int DCTDecode::GetComponents() const { return m_started ? mp_codec->cinfo.output_components : 0; }

}  // namespace lum::Filters

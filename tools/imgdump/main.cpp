// imgdump: writes the decoded samples of a PDF's images as PNM files, to look at what the
// image decoders made of them and to compare with other readers.
//
//   imgdump [--password PW] FILE OBJ [OUT]      the image XObject with object number OBJ;
//                                               OBJ:smask and OBJ:mask for its masks
//   imgdump [--password PW] --all FILE [PREFIX] every image XObject, as PREFIX-OBJ.pnm;
//                                               without PREFIX the samples are only decoded
//   imgdump [--password PW] --list FILE         one line per image XObject
//   imgdump [--password PW] --coded FILE OBJ OUT the coded image data: the stream with every
//                                               stage but the last (the image decoder) undone
//   imgdump [--password PW] --inline FILE PAGE [PREFIX]
//                                               the inline images of page PAGE, in the order
//                                               they are drawn (forms and Type 3 glyphs
//                                               entered), as PREFIX-INDEX.pnm; reported with
//                                               "inline:INDEX" for OBJ
//
// The file holds the samples as the filter chain delivers them, with a header that fits:
// 1 bit gray as P4 (a sample 0 is written black), other gray as P5, three components as P6,
// anything else as P7 with DEPTH set to the component count. Samples of 2 and 4 bits are
// written one a byte with MAXVAL 3 or 15, 16-bit samples big-endian. JPEG 2000 images take
// the shape their decoder reports. A chain that delivers less than the image needs is padded
// with zeros and said so.
//
// Each image adds a line to standard output:
//   OBJ WIDTH HEIGHT COMPONENTS BITS FILTER DELIVERED NEEDED SECONDS [error: TEXT]
// Exit status: 0 when every image asked for decoded, 1 otherwise, 2 for a usage error.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "Filters/FilterReader.h"
#include "Filters/JPXDecode.h"
#include "Filters/MappedFile.h"
#include "PDF/ElementReader.h"
#include "PDF/Font/Font.h"
#include "PDF/PDFDoc.h"
#include "PDF/Page.h"
#include "PDF/PageIterator.h"
#include "SDF/DocImpl.h"
#include "SDF/ImageColorInfo.h"
#include "SDF/Obj.h"
#include "SDF/SDFDoc.h"

using namespace lum;

namespace {

// Dimensions beyond this are refused rather than padded: the tool would write gigabytes.
constexpr double kMaxSide = 1 << 20;
constexpr size_t kMaxImageBytes = size_t(1) << 31;

struct Shape {
    size_t width = 0, height = 0;
    int components = 1, bits = 8;
    size_t RowBytes() const { return (width * size_t(components) * size_t(bits) + 7) / 8; }
};

int IntOf(SDF::Obj* image, SDF::StaticName key, int fallback) {
    SDF::Obj* v = image->FindObj(key);
    if (!v || !v->IsNumber() || !std::isfinite(v->GetNumber())) return fallback;
    const double d = v->GetNumber();
    return d < 0 || d > kMaxSide ? fallback : static_cast<int>(d);
}

std::string FilterNames(SDF::Obj* image) {
    SDF::Obj* f = image->FindObj(SDF::e_Filter);
    if (!f) return "none";
    if (f->IsName()) return f->GetName();
    std::string names;
    if (f->IsArray())
        for (UInt32 i = 0; i < f->Size(); ++i)
            if (SDF::Obj* n = f->GetAt(i); n && n->IsName()) names += (names.empty() ? "" : ",") + std::string(n->GetName());
    return names.empty() ? "none" : names;
}

bool IsImage(SDF::Obj* obj) {
    if (!obj || !obj->IsStream()) return false;
    SDF::Obj* subtype = obj->FindObj(SDF::e_Subtype);
    return subtype && subtype->IsName() && std::strcmp(subtype->GetName(), "Image") == 0;
}

Shape ShapeFromDict(SDF::Obj* image) {
    Shape s;
    s.width = size_t(IntOf(image, SDF::e_Width, 0));
    s.height = size_t(IntOf(image, SDF::e_Height, 0));
    SDF::Obj* mask = image->FindObj(SDF::e_ImageMask);
    if (mask && mask->IsBool() && mask->GetBool()) {
        s.components = 1;
        s.bits = 1;
        return s;
    }
    s.components = SDF::ReadImageColorInfo(image).components;
    s.bits = IntOf(image, SDF::e_BitsPerComponent, 8);
    if (s.bits != 1 && s.bits != 2 && s.bits != 4 && s.bits != 8 && s.bits != 16) s.bits = 8;
    return s;
}

void WriteHeader(std::FILE* out, const Shape& s) {
    if (s.components == 1 && s.bits == 1) {
        std::fprintf(out, "P4\n%zu %zu\n", s.width, s.height);
        return;
    }
    const int maxval = (1 << s.bits) - 1;
    if (s.components == 1 || s.components == 3)
        std::fprintf(out, "P%d\n%zu %zu\n%d\n", s.components == 1 ? 5 : 6, s.width, s.height, maxval);
    else
        std::fprintf(out, "P7\nWIDTH %zu\nHEIGHT %zu\nDEPTH %d\nMAXVAL %d\nTUPLTYPE %s\nENDHDR\n",
                     s.width, s.height, s.components, maxval, s.components == 4 ? "CMYK" : "MULTI");
}

// One row of samples as PNM wants it.
void WriteRow(std::FILE* out, const Shape& s, const UInt8* row, std::vector<UInt8>& tmp) {
    const size_t n = s.RowBytes();
    if (s.bits == 8 || s.bits == 16) {
        std::fwrite(row, 1, n, out);
    } else if (s.bits == 1 && s.components == 1) {
        tmp.assign(row, row + n);
        for (UInt8& b : tmp) b = static_cast<UInt8>(~b);
        std::fwrite(tmp.data(), 1, n, out);
    } else {
        const size_t samples = s.width * size_t(s.components);
        tmp.resize(samples);
        const int per_byte = 8 / s.bits, mask = (1 << s.bits) - 1;
        for (size_t i = 0; i < samples; ++i)
            tmp[i] = static_cast<UInt8>((row[i / per_byte] >> ((per_byte - 1 - int(i % per_byte)) * s.bits)) & mask);
        std::fwrite(tmp.data(), 1, samples, out);
    }
}

// Decodes one image; writes it to `path` unless that is empty. Prints the report line.
bool Dump(SDF::Obj* image, UInt32 num, const std::string& path) {
    Shape s = ShapeFromDict(image);
    const auto start = std::chrono::steady_clock::now();
    size_t delivered = 0, needed = 0;
    std::string error;
    try {
        std::unique_ptr<Filters::Filter> chain = image->GetDecodedStream();
        Filters::FilterReader reader(chain.get());
        reader.Peek();  // opens the decoder, so that a JPEG 2000 stage knows its shape
        if (auto* jpx = dynamic_cast<Filters::JPXDecode*>(chain.get())) {
            if (jpx->GetComponents() <= 0) throw std::runtime_error("JPEG 2000 data not decoded");
            s.width = jpx->GetWidth();
            s.height = jpx->GetHeight();
            s.components = jpx->GetComponents();
            s.bits = jpx->GetBits();
        }
        needed = s.RowBytes() * s.height;
        if (needed > kMaxImageBytes) throw std::runtime_error("image too large for this tool");
        std::FILE* out = nullptr;
        if (!path.empty()) {
            out = path == "-" ? stdout : std::fopen(path.c_str(), "wb");
            if (!out) throw std::runtime_error("cannot write " + path);
            WriteHeader(out, s);
        }
        std::vector<UInt8> row(s.RowBytes()), tmp;
        for (size_t y = 0; y < s.height; ++y) {
            const size_t got = reader.Read(row.data(), row.size());
            delivered += got;
            if (got < row.size()) std::memset(row.data() + got, 0, row.size() - got);
            if (out) WriteRow(out, s, row.data(), tmp);
        }
        if (out && out != stdout) std::fclose(out);
    } catch (const Common::Exception& e) {
        error = e.GetMessage();
    } catch (const std::exception& e) {
        error = e.what();
    }
    const double seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::printf("%u %zu %zu %d %d %s %zu %zu %.6f%s%s\n", num, s.width, s.height, s.components,
                s.bits, FilterNames(image).c_str(), delivered, needed, seconds,
                error.empty() ? "" : " error: ", error.c_str());
    return error.empty();
}

// The inline images of a page, through the element reader, each written as it is met.
class InlineWalk {
public:
    InlineWalk(std::string prefix) : m_prefix(std::move(prefix)) {}

    bool Page(PDF::Page& page) {
        PDF::ElementReader reader;
        try {
            reader.Begin(page);
            Walk(reader, 0);
            reader.End();
        } catch (const Common::Exception& e) {
            std::printf("page ended: %s\n", e.GetMessage().c_str());
            return false;
        }
        return m_ok;
    }

private:
    // Forms and glyph procedures nest; real files stay far below this.
    static constexpr int kMaxDepth = 32;

    void Walk(PDF::ElementReader& reader, int depth) {
        while (PDF::Element* e = reader.Next()) {
            const PDF::Element::Type type = e->GetType();
            if (type == PDF::Element::e_inline_image) {
                Write(*e);
            } else if (type == PDF::Element::e_form && depth < kMaxDepth) {
                reader.FormBegin();
                Walk(reader, depth + 1);
                reader.End();
            } else if (type == PDF::Element::e_text && depth < kMaxDepth) {
                const PDF::Font& font = e->GetGState().GetFont();
                if (!font || font.GetType() != PDF::Font::e_Type3) continue;
                // A Type 3 glyph may draw inline images, each time the glyph is shown.
                PDF::CharData it, end;
                e->GetCharIterator(it);
                e->GetCharIteratorEnd(end);
                for (; it != end; ++it) {
                    reader.Type3FontBegin(it);
                    Walk(reader, depth + 1);
                    reader.End();
                }
            }
        }
    }

    void Write(PDF::Element& e) {
        Shape s;
        s.width = size_t(std::max(0, e.GetImageWidth()));
        s.height = size_t(std::max(0, e.GetImageHeight()));
        s.components = std::max(1, e.GetComponentNum());
        s.bits = e.GetBitsPerComponent();
        const size_t have = size_t(std::max(0, e.GetImageDataSize()));
        const size_t need = s.RowBytes() * s.height;
        const int index = m_index++;
        std::string error;
        if (s.bits != 1 && s.bits != 2 && s.bits != 4 && s.bits != 8 && s.bits != 16) error = "bits per component";
        if (error.empty() && !m_prefix.empty()) {
            const std::string path = m_prefix + "-" + std::to_string(index) + ".pnm";
            if (std::FILE* out = std::fopen(path.c_str(), "wb")) {
                WriteHeader(out, s);
                std::vector<UInt8> row(s.RowBytes()), tmp;
                const UInt8* data = e.GetImageData();
                for (size_t y = 0; y < s.height; ++y) {
                    const size_t at = y * row.size();
                    std::memset(row.data(), 0, row.size());
                    if (at < have) std::memcpy(row.data(), data + at, std::min(row.size(), have - at));
                    WriteRow(out, s, row.data(), tmp);
                }
                std::fclose(out);
            } else {
                error = "cannot write " + path;
            }
        }
        std::printf("inline:%d %zu %zu %d %d inline %zu %zu 0%s%s\n", index, s.width, s.height,
                    s.components, s.bits, std::min(have, need), need, error.empty() ? "" : " error: ",
                    error.c_str());
        m_ok = m_ok && error.empty();
    }

    std::string m_prefix;
    int m_index = 0;
    bool m_ok = true;
};

bool WriteCoded(SDF::Obj* image, const std::string& path) {
    std::unique_ptr<Filters::Filter> chain = image->GetDecodedStream(true);
    std::FILE* out = std::fopen(path.c_str(), "wb");
    if (!out) return false;
    Filters::FilterReader reader(chain.get());
    std::vector<UInt8> buf(65536);
    while (size_t n = reader.Read(buf.data(), buf.size())) std::fwrite(buf.data(), 1, n, out);
    std::fclose(out);
    return true;
}

int Usage() {
    std::fprintf(stderr,
                 "usage: imgdump [--password PW] FILE OBJ [OUT]\n"
                 "       imgdump [--password PW] --all FILE [PREFIX]\n"
                 "       imgdump [--password PW] --list FILE\n"
                 "       imgdump [--password PW] --coded FILE OBJ OUT\n"
                 "       imgdump [--password PW] --inline FILE PAGE [PREFIX]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    const char* password = nullptr;
    std::string mode;
    std::vector<std::string> args;
    for (int i = 1; i < argc; ++i) {
        if (std::strcmp(argv[i], "--password") == 0 && i + 1 < argc)
            password = argv[++i];
        else if (std::strcmp(argv[i], "--all") == 0 || std::strcmp(argv[i], "--list") == 0 ||
                 std::strcmp(argv[i], "--coded") == 0 || std::strcmp(argv[i], "--inline") == 0)
            mode = argv[i] + 2;
        else
            args.push_back(argv[i]);
    }
    if (mode == "inline") {
        if (args.size() < 2 || args.size() > 3) return Usage();
        try {
            PDF::PDFDoc doc(args[0]);
            if (password) doc.InitStdSecurityHandler(UString(password, -1, enc_ascii));
            PDF::PageIterator it = doc.GetPageIterator(std::atoi(args[1].c_str()));
            if (it == doc.GetPageIteratorEnd() || !it->IsValid()) {
                std::fprintf(stderr, "imgdump: no page %s\n", args[1].c_str());
                return 1;
            }
            return InlineWalk(args.size() > 2 ? args[2] : "").Page(*it) ? 0 : 1;
        } catch (const Common::Exception& e) {
            std::fprintf(stderr, "imgdump: %s: %s\n", args[0].c_str(), e.GetMessage().c_str());
            return 1;
        }
    }
    const bool one_image = mode.empty() || mode == "coded";
    if (args.empty() || (one_image && args.size() < 2) || args.size() > (one_image ? 3 : 2) ||
        (mode == "coded" && args.size() != 3))
        return Usage();
    try {
        SDF::SDFLinarDoc doc(std::make_unique<Filters::MappedFile>(args[0]));
        if (password) doc.InitStdSecurityHandler(UString(password, -1, enc_ascii));
        else doc.InitSecurityHandler();
        if (one_image) {
            // OBJ, or OBJ:smask / OBJ:mask for the soft mask or the explicit mask of an image.
            char* rest = nullptr;
            const long num = std::strtol(args[1].c_str(), &rest, 10);
            SDF::Obj* obj = num > 0 && size_t(num) < doc.XRefSize() ? doc.GetObj(UInt32(num)) : nullptr;
            UInt32 shown = UInt32(num);
            if (obj && (std::strcmp(rest, ":smask") == 0 || std::strcmp(rest, ":mask") == 0)) {
                obj = obj->FindObj(rest[1] == 's' ? SDF::e_SMask : SDF::e_Mask);
                shown = obj && obj->IsIndirect() ? obj->GetObjNum() : 0;
            } else if (*rest) {
                obj = nullptr;
            }
            if (!obj || !obj->IsStream()) {
                std::fprintf(stderr, "imgdump: %s is no image\n", args[1].c_str());
                return 1;
            }
            if (mode == "coded") return WriteCoded(obj, args[2]) ? 0 : 1;
            return Dump(obj, shown, args.size() > 2 ? args[2] : "-") ? 0 : 1;
        }
        bool ok = true;
        for (size_t n = 1; n < doc.XRefSize(); ++n) {
            SDF::Obj* obj = nullptr;
            try {
                obj = doc.GetObj(UInt32(n));
                if (!IsImage(obj)) continue;
            } catch (const Common::Exception&) {
                continue;
            }
            if (mode == "list") {
                const Shape s = ShapeFromDict(obj);
                std::printf("%zu %zu %zu %d %d %s\n", n, s.width, s.height, s.components, s.bits,
                            FilterNames(obj).c_str());
                continue;
            }
            const std::string path = args.size() > 1 ? args[1] + "-" + std::to_string(n) + ".pnm" : "";
            ok = Dump(obj, UInt32(n), path) && ok;
        }
        return ok ? 0 : 1;
    } catch (const Common::Exception& e) {
        std::fprintf(stderr, "imgdump: %s: %s\n", args[0].c_str(), e.GetMessage().c_str());
    } catch (const std::exception& e) {
        std::fprintf(stderr, "imgdump: %s: %s\n", args[0].c_str(), e.what());
    }
    return 1;
}

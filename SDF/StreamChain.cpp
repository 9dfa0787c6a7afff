// From a stream's Filter names and DecodeParms to a chain of decoders. The chain's first
// stage is the one the file's bytes enter: filters apply in the order the array gives.
#include "SDF/StreamChain.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "Common/Exception.h"
#include "Common/NumberConversions.h"
#include "Filters/ASCII85Decode.h"
#include "Filters/ASCIIHexDecode.h"
#include "Filters/CCITTFaxDecode.h"
#include "Filters/DCTDecode.h"
#include "Filters/FlateDecode.h"
#include "Filters/JBIG2Decode.h"
#include "Filters/JPXDecode.h"
#include "Filters/LZMADecode.h"
#include "Filters/LZWDecode.h"
#include "Filters/Predictor.h"
#include "Filters/RunLengthDecode.h"
#include "SDF/DocImpl.h"
#include "SDF/ImageColorInfo.h"
#include "SDF/Obj.h"

namespace lum::SDF {

using Filters::Filter;

namespace {

// Parameter values are doubles; decoders take integers truncated toward zero. Values far
// outside any real parameter are clamped so the conversion stays defined.
Int64 ToInt(double v) {
    constexpr Int64 kBound = 4000000000000000;  // products of two stay within 64 bits
    return std::clamp(Common::TruncateSaturated(v), -kBound, kBound);
}

// Parameters are read only from a dictionary; anything else counts as no parameters.
Int64 IntParam(Obj* params, StaticName key, Int64 fallback) {
    if (!params || !params->IsDict()) return fallback;
    Obj* v = params->FindObj(key);
    return v && v->IsNumber() ? ToInt(v->GetNumber()) : fallback;
}

bool BoolParam(Obj* params, StaticName key, bool fallback) {
    if (!params || !params->IsDict()) return fallback;
    Obj* v = params->FindObj(key);
    return v && v->IsBool() ? v->GetBool() : fallback;
}

// A number of the stream's own dictionary (Width, Height of an image), or nothing.
bool StreamNumber(Obj* stream, StaticName key, Int64& out) {
    if (!stream) return false;
    Obj* v = stream->FindObj(key);
    if (!v || !v->IsNumber()) return false;
    out = ToInt(v->GetNumber());
    return true;
}

DocImpl* DocOf(Obj* stream) {
    if (!stream) return nullptr;
    Indirect* owner = stream->IsIndirect() ? static_cast<Indirect*>(stream) : stream->GetOwner();
    return owner ? owner->GetDocImpl() : nullptr;
}

// --- Image decoders ---
//
// The stages of image data (DCT, CCITT fax, JBIG2, JPX, LZMA, PNG) plug in here. Each maker
// answers the new chain, or null while its decoder is not part of the build; the builder then
// reports the name as unknown, as for any filter it can't make. Text extraction never needs
// image samples, so a null here costs the image, not the page.

std::unique_ptr<Filter> MakeDCTDecode(std::unique_ptr<Filter>& chain, Int64 color_transform) {
    return std::make_unique<Filters::DCTDecode>(std::move(chain), color_transform);
}
std::unique_ptr<Filter> MakeCCITTFaxDecode(std::unique_ptr<Filter>& chain,
                                           const Filters::CCITTFaxParams& params) {
    return std::make_unique<Filters::CCITTFaxDecode>(std::move(chain), params);
}
std::unique_ptr<Filter> MakeJBIG2Decode(std::unique_ptr<Filter>& chain, std::unique_ptr<Filter> globals,
                                        Int64 width, Int64 height) {
    return std::make_unique<Filters::JBIG2Decode>(std::move(chain), std::move(globals), width, height);
}
std::unique_ptr<Filter> MakeJPXDecode(std::unique_ptr<Filter>& chain, Obj* stream) {
    return std::make_unique<Filters::JPXDecode>(std::move(chain), JPXParamsFromImage(stream));
}
std::unique_ptr<Filter> MakeLZMADecode(std::unique_ptr<Filter>& chain) {
    return std::make_unique<Filters::LZMADecode>(std::move(chain));
}
std::unique_ptr<Filter> MakePNGCompress(std::unique_ptr<Filter>&) { return nullptr; }

bool Is(const char* name, const char* a, const char* b = nullptr) {
    return std::strcmp(name, a) == 0 || (b && std::strcmp(name, b) == 0);
}

}  // namespace

std::unique_ptr<Filter> StreamCreatePredictorFilter(Obj* params, std::unique_ptr<Filter> chain) {
    if (!params || !params->IsDict()) return chain;
    Obj* pred = params->FindObj(e_Predictor);
    if (!pred || !pred->IsNumber()) return chain;
    const Int64 predictor = ToInt(pred->GetNumber());
    if (predictor <= 1) return chain;
    if (predictor != 2 && (predictor < 10 || predictor > 15)) LUM_FAIL("Unknown predictor function.");
    return Filters::CreatePredictorFilter(std::move(chain), predictor,
                                          IntParam(params, e_Columns, 1),
                                          IntParam(params, e_Colors, 1),
                                          IntParam(params, e_BitsPerComponent, 8));
}

std::unique_ptr<Filter> StreamCreateDecodeFilter(Obj* filter_name, Obj* params,
                                                 std::unique_ptr<Filter> chain, Obj* stream) {
    const char* name = filter_name->GetName();
    const bool has_params = params && params->IsDict();
    std::unique_ptr<Filter> made;

    if (Is(name, "FlateDecode", "Fl")) {
        chain = std::make_unique<Filters::FlateDecode>(std::move(chain));
        return has_params ? StreamCreatePredictorFilter(params, std::move(chain)) : std::move(chain);
    }
    if (Is(name, "LZWDecode", "LZW")) {
        const Int64 early = IntParam(params, e_EarlyChange, 1);
        chain = std::make_unique<Filters::LZWDecode>(std::move(chain), early == 0 ? 0 : 1);
        return has_params ? StreamCreatePredictorFilter(params, std::move(chain)) : std::move(chain);
    }
    if (Is(name, "ASCII85Decode", "A85")) return std::make_unique<Filters::ASCII85Decode>(std::move(chain));
    if (Is(name, "ASCIIHexDecode", "AHx"))
        return std::make_unique<Filters::ASCIIHexDecode>(std::move(chain));
    if (Is(name, "RunLengthDecode", "RL"))
        return std::make_unique<Filters::RunLengthDecode>(std::move(chain));

    if (Is(name, "Crypt")) {
        // A Crypt stage leaves the data undecrypted whatever its Name says: the chain is
        // replaced by the raw bytes, and stages in front of it are lost. Its Name has no effect.
        DocImpl* doc = DocOf(stream);
        if (!doc || !doc->GetSecurityHandler()) return chain;
        return stream->GetRawStream(false);
    }

    if (Is(name, "_lumLZMA")) {
        made = MakeLZMADecode(chain);
    } else if (Is(name, "DCTDecode", "DCT")) {
        made = MakeDCTDecode(chain, IntParam(params, e_ColorTransform, -1));
    } else if (Is(name, "CCITTFaxDecode", "CCF")) {
        Filters::CCITTFaxParams p;
        if (has_params) {
            p.k = IntParam(params, e_K, p.k);
            p.end_of_line = BoolParam(params, e_EndOfLine, p.end_of_line);
            p.encoded_byte_align = BoolParam(params, e_EncodedByteAlign, p.encoded_byte_align);
            p.columns = IntParam(params, e_Columns, p.columns);
            p.end_of_block = BoolParam(params, e_EndOfBlock, p.end_of_block);
            p.black_is_1 = BoolParam(params, e_BlackIs1, p.black_is_1);
            p.damaged_rows_before_error =
                IntParam(params, e_DamagedRowsBeforeError, p.damaged_rows_before_error);
            Int64 width = 0;
            if (p.columns < 0 && StreamNumber(stream, e_Width, width) && width > p.columns)
                p.columns = width;
            LUM_CHECK_AS(p.columns >= 0, "Columns >= 0", "CCITTFaxDecode Columns is negative");
            Obj* rows = params->FindObj(e_Rows);
            if (rows && rows->IsNumber()) {
                p.rows = ToInt(rows->GetNumber());
                Int64 height = 0;
                if (StreamNumber(stream, e_Height, height)) p.rows = std::max(p.rows, height);
            }
        }
        made = MakeCCITTFaxDecode(chain, p);
    } else if (Is(name, "JBIG2Decode")) {
        std::unique_ptr<Filter> globals;
        if (has_params) {
            Obj* g = params->FindObj(e_JBIG2Globals);
            if (g && g->IsStream()) globals = g->GetDecodedStream();
        }
        Int64 width = 0, height = 0;
        StreamNumber(stream, e_Width, width);
        StreamNumber(stream, e_Height, height);
        made = MakeJBIG2Decode(chain, std::move(globals), width, height);
    } else if (Is(name, "JPXDecode")) {
        made = MakeJPXDecode(chain, stream);
    } else if (Is(name, "PNGCompress")) {
        made = MakePNGCompress(chain);
    }
    if (!made) LUM_FAIL("Unknown filter");
    return made;
}

}  // namespace lum::SDF

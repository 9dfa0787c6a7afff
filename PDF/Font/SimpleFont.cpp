#include "PDF/Font/SimpleFont.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "Common/Exception.h"
#include "PDF/Font/GlyphNames.h"
#include "PDF/Font/StandardFonts.h"
#include "SDF/Obj.h"

namespace lum::PDF::Fnt {

namespace {

// FirstChar and LastChar are truncated; values no int holds become out of range.
int ToCode(double v) {
    if (!(v == v)) return -1;
    return int(std::clamp(std::trunc(v), -1.0, 65536.0));
}

}  // namespace

SimpleFont::SimpleFont(SDF::Obj* font_dict) : FontImpl(font_dict) { ReadFontDescriptor(); }

double SimpleFont::GetMaxWidth() {
    double best = 0;
    for (double w : m_widths) best = std::max(best, w);
    return best;
}

const char* SimpleFont::OwnName(const char* name) {
    m_owned_names.emplace_back(name);
    return m_owned_names.back().c_str();
}

void SimpleFont::CopyEncoding(const char* const* table) {
    for (int i = 0; i < 256; ++i) m_encoding[i] = table ? table[i] : nullptr;
}

void SimpleFont::ReadStandardFont() {
    m_base14_type = GetStandardFontType(GetName());
    if (mp_font_descriptor) return;
    if (m_base14_type == Font::e_null)
        throw Common::Exception("m_base14_type != Font::e_null", __LINE__, __FILE__, LUM_FUNCTION,
                                "Non-standard font is missing the descriptor");
    const StandardFontRecord& record = gl_standard_fonts[m_base14_type];
    m_ascent = record.ascent;
    m_descent = record.descent;
    m_bbox = Rect(record.bbox[0], record.bbox[1], record.bbox[2], record.bbox[3]);
}

bool SimpleFont::ReadEncoding() {
    SDF::Obj* enc = mp_font_dict->FindObj(SDF::e_Encoding);
    if (enc && enc->IsDict()) enc = enc->FindObj(SDF::e_BaseEncoding);
    if (!enc || !enc->IsName()) return false;
    EncodingKind kind = e_custom;
    const char* const* table = FindBaseEncoding(enc->GetName(), kind);
    if (!table) return false;
    m_encoding_kind = kind;
    CopyEncoding(table);
    return true;
}

bool SimpleFont::AddEncodingDifferences() {
    SDF::Obj* enc = mp_font_dict->FindObj(SDF::e_Encoding);
    if (!enc || !enc->IsDict()) return false;
    SDF::Obj* diffs = enc->FindObj(SDF::e_Differences);
    if (!diffs || !diffs->IsArray()) return false;
    Int64 index = 0;
    const UInt64 n = diffs->Size();
    for (UInt32 i = 0; i < n; ++i) {
        SDF::Obj* item = diffs->GetAt(i);
        if (item->IsNumber()) {
            const double v = std::fabs(item->GetNumber());
            index = v < 1e15 ? Int64(v) : Int64(1e15);
        } else if (item->IsName()) {
            if (index >= 0 && index <= 255) m_encoding[index] = OwnName(item->GetName());
            ++index;
        } else {
            LUM_FAIL("Font has invalid encoding differences.");
        }
    }
    for (int c = 0; c < 256; ++c)
        if (!m_encoding[c]) m_encoding[c] = gl_standard_encoding[c];
    return true;
}

void SimpleFont::InitWidths() {
    std::fill(std::begin(m_widths), std::end(m_widths), m_missing_width);
    const int first_char = ToCode(mp_font_dict->FindNumber(SDF::e_FirstChar, 0));
    const int last_char = ToCode(mp_font_dict->FindNumber(SDF::e_LastChar, 255));
    if (!(first_char >= 0 && first_char < 256 && last_char >= 0 && last_char < 256))
        throw Common::Exception("first_char>=0 && first_char<256 && last_char>=0 && last_char<256",
                                __LINE__, __FILE__, LUM_FUNCTION, "Font has invalid advance widths.");
    SDF::Obj* widths = mp_font_dict->FindObj(SDF::e_Widths);
    if (!widths || !widths->IsArray()) {
        if (m_base14_type == Font::e_null)
            throw Common::Exception("m_base14_type != Font::e_null", __LINE__, __FILE__,
                                    LUM_FUNCTION, "Non-standard font is missing 'Widths' array");
        const StdWidthTable* builtin = GetStandardFontWidths(m_base14_type);
        if (!builtin)
            throw Common::Exception("builtinFont->widths != 0", __LINE__, __FILE__, LUM_FUNCTION,
                                    "Ferrox is not initialized");
        double space = m_missing_width;
        builtin->Find("space", space);
        m_widths[32] = space;
        for (int c = 0; c < 256; ++c) {
            double w;
            if (m_encoding[c] && builtin->Find(m_encoding[c], w))
                m_widths[c] = w;
            else if (c == 0 || c == 9 || c == 10 || c == 12 || c == 13 || c == 32)
                m_widths[c] = space;
        }
        return;
    }
    int last = last_char;
    const Int64 size = Int64(widths->Size());
    if (size < Int64(last_char) - first_char + 1)
        last = int(std::min<Int64>(Int64(first_char) + Int64(size) - 1, 255));
    for (int c = first_char; c <= last; ++c) m_widths[c] = widths->GetAt(UInt32(c - first_char))->GetNumber();
}

bool SimpleFont::MapUnicodeToCode(Unicode unit, UInt32& code) {
    PrepareUnicode();
    for (UInt32 c = 0; c < 256; ++c) {
        if (m_unicode[c] == unit) {
            code = c;
            return true;
        }
    }
    return false;
}

UnicodeTableInput SimpleFont::UnicodeInput() {
    UnicodeTableInput in;
    in.names = m_encoding;
    in.zapf_dingbats = m_base14_type == Font::e_zapf_dingbats;
    try {
        in.has_tounicode = mp_font_dict->FindObj(SDF::e_ToUnicode) != nullptr;
    } catch (const Common::Exception&) {
        in.has_tounicode = false;
    }
    in.truetype = GetType() == Font::e_TrueType;
    for (const std::string& name : m_owned_names)
        if (name.size() >= 4) in.long_owned_name = true;
    return in;
}

void SimpleFont::PrepareUnicode() {
    if (m_unicode_ready.load(std::memory_order_acquire)) return;
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (m_unicode_ready.load(std::memory_order_relaxed)) return;
    // A TrueType program gives names to codes when it is opened: open it before the table.
    if (GetType() == Font::e_TrueType) LoadFontProgram();
    BuildUnicodeTable(UnicodeInput(), m_unicode);
    LoadToUnicode();
    m_unicode_ready.store(true, std::memory_order_release);
}

bool SimpleFont::MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count,
                              bool use_tounicode) {
    if (capacity < 1) return false;
    PrepareUnicode();
    return MapSimpleFontCode(code, m_unicode, m_encoding, mp_tounicode.get(), use_tounicode, units,
                             capacity, count);
}

// --- Type 1 ---

Type1Font::Type1Font(SDF::Obj* font_dict) : SimpleFont(font_dict) {
    ReadStandardFont();
    if (!ReadEncoding()) {
        if (IsEmbedded()) {
            ReadBuiltinEncoding();
        } else {
            CopyEncoding(gl_standard_encoding);
            m_encoding_kind = e_standard;
        }
    }
    if ((m_base14_type == Font::e_symbol || m_base14_type == Font::e_zapf_dingbats) && !IsEmbedded()) {
        CopyEncoding(gl_standard_fonts[m_base14_type].default_encoding);
        m_encoding_kind = e_win_ansi;
    }
    AddEncodingDifferences();
    InitWidths();
}

// --- TrueType ---

TrueTypeFont::TrueTypeFont(SDF::Obj* font_dict) : SimpleFont(font_dict) {
    ReadStandardFont();
    if (ReadEncoding()) {
        m_has_encoding = true;
    } else {
        if (IsEmbedded()) {
            if (AddEncodingDifferences()) m_has_encoding = true;
            if (LoadFontProgram()) {
                InitWidths();
                return;
            }
        }
        // Not embedded, or the program proved unreadable.
        CopyEncoding(gl_win_ansi_encoding);
        m_encoding_kind = e_win_ansi;
    }
    if ((m_base14_type == Font::e_symbol || m_base14_type == Font::e_zapf_dingbats) && !IsEmbedded()) {
        CopyEncoding(gl_standard_fonts[m_base14_type].default_encoding);
        m_encoding_kind = e_win_ansi;
    }
    if (AddEncodingDifferences()) m_has_encoding = true;
    InitWidths();
}

// --- Type 3 ---

Type3Font::Type3Font(SDF::Obj* font_dict) : SimpleFont(font_dict) {
    mp_char_procs = mp_font_dict->Get(SDF::e_CharProcs)->second;
    if (!ReadEncoding()) CopyEncoding(nullptr);
    AddEncodingDifferences();
    InitWidths();
    try {
        SDF::Obj* m = mp_font_dict->FindObj(SDF::e_FontMatrix);
        if (m && m->IsArray() && m->Size() >= 6) {
            double v[6];
            for (UInt32 i = 0; i < 6; ++i) v[i] = m->GetAt(i)->GetNumber();
            m_font_matrix = Common::Matrix2D(v[0], v[1], v[2], v[3], v[4], v[5]);
        }
        SDF::Obj* box = mp_font_dict->FindObj(SDF::e_FontBBox);
        if (box && box->IsArray() && box->Size() >= 4) {
            double v[4];
            for (UInt32 i = 0; i < 4; ++i) v[i] = box->GetAt(i)->GetNumber();
            m_bbox = Rect(std::min(v[0], v[2]), std::min(v[1], v[3]), std::max(v[0], v[2]),
                          std::max(v[1], v[3]));
        }
    } catch (const Common::Exception&) {
        // A damaged matrix or box keeps the defaults.
    }
}

const char* Type3Font::GetName() {
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (!m_name_cached) {
        try {
            SDF::Obj* name = mp_font_dict->FindObj(SDF::e_Name);
            if (name && name->IsName()) m_name_cache = name->GetName();
        } catch (const Common::Exception&) {
        }
        m_name_cached = true;
    }
    return m_name_cache.c_str();
}

int Type3Font::GetUnitsPerEm() { NotApplicable("GetUnitsPerEm()", "Type3"); }

SDF::Obj* Type3Font::GetEmbeddedFont() { NotApplicable("GetEmbeddedFont()", "Type3"); }

int Type3Font::GetEmbeddedFontBufSize() { NotApplicable("GetEmbeddedFontBufSize()", "Type3"); }

SDF::Obj* Type3Font::GetType3GlyphStream(UInt32 code) {
    LUM_CHECK(code < 256, "char_code<256");
    std::lock_guard<std::recursive_mutex> lock(m_font_mutex);
    if (!m_procs_built) {
        for (int c = 0; c < 256; ++c) {
            if (!m_encoding[c]) continue;
            try {
                m_procs[c] = mp_char_procs->FindObj(SDF::Name(m_encoding[c]));
            } catch (const Common::Exception&) {
                m_procs[c] = nullptr;
            }
        }
        m_procs_built = true;
    }
    return m_procs[code];
}

bool Type3Font::MapToUnicode(UInt32 code, Unicode* units, int capacity, UInt32& count,
                             bool use_tounicode) {
    if (capacity < 1) return false;
    if (SimpleFont::MapToUnicode(code, units, capacity, count, use_tounicode)) return true;
    return Type3FallbackCode(code, units, count);
}

}  // namespace lum::PDF::Fnt

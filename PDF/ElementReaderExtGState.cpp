// The gs operator: an ExtGState dictionary applied key by key, in the dictionary's order,
// straight into the current state. Values are read by their accessors, so a value of the
// wrong type raises the object's type error.
#include <algorithm>
#include <cstring>

#include "Common/Exception.h"
#include "PDF/ElementReaderImpl.h"
#include "PDF/Font/Font.h"
#include "SDF/Obj.h"

namespace lum::PDF {

namespace {

bool Is(const char* key, const char* name) { return std::strcmp(key, name) == 0; }

int ToInt(double v) {
    if (!(v == v)) return 0;
    return int(std::clamp(v, -2147483648.0, 2147483647.0));
}

bool Has(SDF::Obj* dict, const char* key) {
    for (auto it = dict->DictBegin(); it != dict->DictEnd(); ++it)
        if (Is(it->first->GetName(), key)) return true;
    return false;
}

// BM: a name, or the first name of an array that names a mode; else Compatible.
GState::BlendMode BlendModeOf(SDF::Obj* value) {
    if (value->IsName()) {
        const int mode = GState::GetBlendModeType(value->GetName());
        return GState::BlendMode(mode < 0 ? 0 : mode);
    }
    if (value->IsArray()) {
        for (UInt32 i = 0; i < value->Size(); ++i) {
            SDF::Obj* item = value->GetAt(i);
            if (!item->IsName()) continue;
            const int mode = GState::GetBlendModeType(item->GetName());
            if (mode >= 0) return GState::BlendMode(mode);
        }
    }
    return GState::e_bl_compatible;
}

}  // namespace

bool ElementReaderImpl::OpExtGState() {
    if (Argc() < 1) return true;
    SDF::Obj* dict = m_resources.GetExtGState(NameArg(1, 0));
    if (!dict || !dict->IsDict()) return true;
    SDF::Obj* smask = dict->FindObj(SDF::e_SMask);
    if (smask && IsOpen(smask)) return true;
    ApplyExtGState(dict);
    return true;
}

void ElementReaderImpl::ApplyExtGState(SDF::Obj* dict) {
    GStateImpl& gs = mp_element->State();
    const bool has_op = Has(dict, "op");
    const bool has_bg2 = Has(dict, "BG2"), has_ucr2 = Has(dict, "UCR2"), has_tr2 = Has(dict, "TR2");
    for (auto it = dict->DictBegin(); it != dict->DictEnd(); ++it) {
        const char* key = it->first->GetName();
        SDF::Obj* v = it->second;
        if (!v || v->IsNull()) continue;
        switch (key[0]) {
            case 'L':
                if (Is(key, "LW")) gs.SetLineWidth(v->GetNumber());
                else if (Is(key, "LC")) gs.SetLineCap(GState::LineCap(ToInt(v->GetNumber())));
                else if (Is(key, "LJ")) gs.SetLineJoin(GState::LineJoin(ToInt(v->GetNumber())));
                break;
            case 'M':
                if (Is(key, "ML")) gs.SetMiterLimit(v->GetNumber());
                break;
            case 'D':
                if (Is(key, "D")) {
                    SDF::Obj* arr = v->GetAt(0);
                    const double phase = v->GetAt(1)->GetNumber();
                    std::vector<double> dashes;
                    for (UInt32 i = 0; i < arr->Size(); ++i) dashes.push_back(arr->GetAt(i)->GetNumber());
                    gs.SetDashPattern(dashes, phase);
                }
                break;
            case 'R':
                if (Is(key, "RI") && v->IsName())
                    gs.SetRenderingIntent(GState::GetRenderingIntentType(v->GetName()));
                break;
            case 'F':
                if (Is(key, "Font")) {
                    const double size = v->GetAt(1)->GetNumber();
                    gs.SetFont(Font(v->GetAt(0)), size);
                } else if (Is(key, "FL")) {
                    gs.SetFlatness(v->GetNumber());
                }
                break;
            case 'O':
                if (Is(key, "OP")) {
                    gs.SetStrokeOverprint(v->GetBool());
                    if (!has_op) gs.SetFillOverprint(v->GetBool());
                } else if (Is(key, "OPM")) {
                    gs.SetOverprintMode(ToInt(v->GetNumber()));
                }
                break;
            case 'o':
                if (Is(key, "op")) gs.SetFillOverprint(v->GetBool());
                break;
            case 'B':
                if (Is(key, "BG2") || (Is(key, "BG") && !has_bg2)) gs.SetBlackGenFunct(v);
                else if (Is(key, "BM")) gs.SetBlendMode(BlendModeOf(v));
                break;
            case 'U':
                if (Is(key, "UCR2") || (Is(key, "UCR") && !has_ucr2)) gs.SetUCRFunct(v);
                break;
            case 'T':
                if (Is(key, "TR2") || (Is(key, "TR") && !has_tr2)) gs.SetTransferFunct(v);
                else if (Is(key, "TK")) gs.SetTextKnockout(v->GetBool());
                break;
            case 'H':
                if (Is(key, "HT")) gs.SetHalftone(v);
                break;
            case 'S':
                if (Is(key, "SM")) {
                    gs.SetSmoothnessTolerance(v->GetNumber());
                } else if (Is(key, "SA")) {
                    gs.SetAutoStrokeAdjust(v->GetBool());
                } else if (Is(key, "SMask")) {
                    if (v->IsDict())
                        gs.SetSoftMask(v, gs.GetCTM());
                    else if (v->IsName())
                        gs.SetSoftMask(nullptr, Common::Matrix2D());
                }
                break;
            case 'C':
                if (Is(key, "CA")) gs.SetStrokeOpacity(std::clamp(v->GetNumber(), 0.0, 1.0));
                break;
            case 'c':
                if (Is(key, "ca")) gs.SetFillOpacity(std::clamp(v->GetNumber(), 0.0, 1.0));
                break;
            case 'A':
                if (Is(key, "AIS")) gs.SetAISFlag(v->GetBool());
                break;
            default:
                break;
        }
    }
}

}  // namespace lum::PDF

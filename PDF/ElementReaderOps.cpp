// The content operators: a switch on the first byte, then on the second, never a map. Each
// returns true to go on reading, false when it finished an element.
#include <algorithm>
#include <cmath>
#include <cstring>

#include "Common/Exception.h"
#include "Common/Limits.h"
#include "PDF/ElementReaderImpl.h"
#include "PDF/Font/Font.h"
#include "SDF/Obj.h"

namespace lum::PDF {

namespace {

// Integer operands are truncated toward zero; values no int holds are cut to its range.
int ToInt(double v) {
    if (!(v == v)) return 0;
    return int(std::clamp(v, -2147483648.0, 2147483647.0));
}

double Clamp01(double v) { return std::clamp(v, 0.0, 1.0); }

}  // namespace

double ElementReaderImpl::Num(size_t n, size_t k) const { return Arg(n, k)->GetNumber(); }

const SDF::Name& ElementReaderImpl::NameArg(size_t n, size_t k) const {
    SDF::Obj* obj = Arg(n, k);
    // Operands are the parser's own values, never references: a name is a Name.
    if (obj->GetType() != SDF::Obj::e_name || obj->IsIndirect()) obj->GetName();  // raises
    return *static_cast<const SDF::Name*>(obj);
}

size_t ElementReaderImpl::TopNumbers(size_t skip_top) const {
    size_t n = 0;
    const size_t argc = Argc();
    while (skip_top + n < argc && m_operand_stack[argc - 1 - skip_top - n]->IsNumber()) ++n;
    return n;
}

bool ElementReaderImpl::ProcessOperator(const char* t, size_t size) {
    ElementBuilderImpl& e = *mp_element;
    GStateImpl& gs = e.State();
    const size_t argc = Argc();
    const char c0 = t[0];
    const char c1 = size > 1 ? t[1] : 0;

    if (size == 1) {
        switch (c0) {
            case 'q': return OpPush();
            case 'Q': return OpPop();
            case 'w': if (argc >= 1) gs.SetLineWidth(Num(1, 0)); return true;
            case 'J': if (argc >= 1) gs.SetLineCap(GState::LineCap(ToInt(Num(1, 0)))); return true;
            case 'j': if (argc >= 1) gs.SetLineJoin(GState::LineJoin(ToInt(Num(1, 0)))); return true;
            case 'M': if (argc >= 1) gs.SetMiterLimit(Num(1, 0)); return true;
            case 'i': if (argc >= 1) gs.SetFlatness(Num(1, 0)); return true;
            case 'd': return OpDash();
            case 'm': case 'l': case 'c': case 'v': case 'y': case 'h':
                return OpPath(c0, size, t);
            case 'S': return OpPaint(false, true, false, true);
            case 's': return OpPaint(true, true, false, true);
            case 'f': case 'F': return OpPaint(false, false, true, true);
            case 'B': return OpPaint(false, true, true, true);
            case 'b': return OpPaint(true, true, true, true);
            case 'n': return OpPaint(false, false, false, true);
            case 'W':
                e.m_clip = true;
                e.m_clip_winding = true;
                return true;
            case 'G': return OpDeviceColor(true, 1);
            case 'g': return OpDeviceColor(false, 1);
            case 'K': return OpDeviceColor(true, 4);
            case 'k': return OpDeviceColor(false, 4);
            case '\'': return OpNextLineShow(false);
            case '"': return OpNextLineShow(true);
            default: return true;
        }
    }

    if (size == 2) {
        switch (c0) {
            case 'c':
                if (c1 == 'm' && argc >= 6) {
                    gs.Concat(Num(6, 0), Num(6, 1), Num(6, 2), Num(6, 3), Num(6, 4), Num(6, 5));
                    e.m_pending_adjustment = 0;
                }
                if (c1 == 's') return OpColorSpace(false);
                return true;
            case 'r':
                if (c1 == 'i' && argc >= 1 && Arg(1, 0)->IsName())
                    gs.SetRenderingIntent(GState::GetRenderingIntentType(Arg(1, 0)->GetName()));
                if (c1 == 'e') return OpPath('r', size, t);
                if (c1 == 'g') return OpDeviceColor(false, 3);
                return true;
            case 'g':
                if (c1 == 's') return OpExtGState();
                return true;
            case 'f':
                if (c1 == '*') return OpPaint(false, false, true, false);
                return true;
            case 'B':
                if (c1 == '*') return OpPaint(false, true, true, false);
                if (c1 == 'T') {
                    e.m_text_matrix = Common::Matrix2D();
                    e.m_cur_x = e.m_cur_y = 0;
                    e.m_line_x = e.m_line_y = 0;
                    e.m_text_length = 0;
                    e.m_line_offset_x = e.m_line_offset_y = 0;
                    e.m_in_text_object = true;
                    e.Finish(Element::e_text_begin);
                    return false;
                }
                if (c1 == 'X') {
                    if (e.m_compat_depth < 255) ++e.m_compat_depth;
                    return true;
                }
                return true;  // BI: the image's entries pile up on the stack
            case 'b':
                if (c1 == '*') return OpPaint(true, true, true, false);
                return true;
            case 'W':
                if (c1 == '*') {
                    e.m_clip = true;
                    e.m_clip_winding = false;
                }
                return true;
            case 'R':
                if (c1 == 'G') return OpDeviceColor(true, 3);
                return true;
            case 'C':
                if (c1 == 'S') return OpColorSpace(true);
                return true;
            case 'S':
                if (c1 == 'C') return OpColor(true, false);
                return true;
            case 's':
                if (c1 == 'c') return OpColor(false, false);
                if (c1 == 'h') return OpShading();
                return true;
            case 'D':
                if (c1 == 'o') return OpXObject();
                if (c1 == 'P') return OpMarkedContent(Element::e_marked_content_point, true);
                return true;
            case 'I':
                if (c1 == 'D') return OpInlineImage();
                return true;
            case 'E':
                if (c1 == 'T') {
                    e.m_in_text_object = false;
                    e.Finish(Element::e_text_end);
                    return false;
                }
                if (c1 == 'X') {
                    if (e.m_compat_depth > 0) --e.m_compat_depth;
                    return true;
                }
                return true;  // EI behind inline image data
            case 'M':
                if (c1 == 'P') return OpMarkedContent(Element::e_marked_content_point, false);
                return true;
            case 'd':
                if ((c1 == '0' && argc >= 2) || (c1 == '1' && argc >= 6)) {
                    const size_t n = c1 == '0' ? 2 : 6;
                    e.m_type3_wx = Num(n, 0);
                    e.m_type3_wy = Num(n, 1);
                }
                return true;
            case 'T':
                switch (c1) {
                    case 'c': if (argc >= 1) gs.SetCharSpacing(Num(1, 0)); return true;
                    case 'w': if (argc >= 1) gs.SetWordSpacing(Num(1, 0)); return true;
                    case 'z': if (argc >= 1) gs.SetHorizontalScale(Num(1, 0)); return true;
                    case 'L': if (argc >= 1) gs.SetLeading(Num(1, 0)); return true;
                    case 'r':
                        if (argc >= 1)
                            gs.SetTextRenderMode(GState::TextRenderingMode(ToInt(Num(1, 0))));
                        return true;
                    case 's': if (argc >= 1) gs.SetTextRise(Num(1, 0)); return true;
                    case 'f': return OpTextFont();
                    case 'd':
                        if (argc < 2) return true;
                        return OpTextMove(Num(2, 0), Num(2, 1));
                    case 'D': {
                        if (argc < 2) return true;
                        const double tx = Num(2, 0), ty = Num(2, 1);
                        gs.SetLeading(-ty);
                        return OpTextMove(tx, ty);
                    }
                    case 'm':
                        if (argc >= 6) {
                            e.m_text_matrix = Common::Matrix2D(Num(6, 0), Num(6, 1), Num(6, 2),
                                                               Num(6, 3), Num(6, 4), Num(6, 5));
                            e.m_cur_x = e.m_cur_y = 0;
                            e.m_line_x = e.m_line_y = 0;
                            e.m_pending_adjustment = 0;
                            e.m_has_text_matrix = true;
                        }
                        return true;
                    case '*': return OpNextLine();
                    case 'j': return OpShowString();
                    case 'J': return OpShowArray();
                    default: return true;
                }
            default:
                return true;  // PS and every unknown operator
        }
    }

    if (size == 3) {
        if (c0 == 'B' && c1 == 'M' && t[2] == 'C')
            return OpMarkedContent(Element::e_marked_content_begin, false);
        if (c0 == 'B' && c1 == 'D' && t[2] == 'C')
            return OpMarkedContent(Element::e_marked_content_begin, true);
        if (c0 == 'E' && c1 == 'M' && t[2] == 'C') {
            e.Finish(Element::e_marked_content_end);
            return false;
        }
        if (c0 == 'S' && c1 == 'C' && t[2] == 'N') return OpColor(true, true);
        if (c0 == 's' && c1 == 'c' && t[2] == 'n') return OpColor(false, true);
    }
    return true;
}

// --- State ---

bool ElementReaderImpl::OpPush() {
    ElementBuilderImpl& e = *mp_element;
    if (e.StateDepth() >= Limits::kMaxStateDepth)
        ++m_level_info.back().m_q_overflow;
    else
        e.PushState();
    e.Finish(Element::e_group_begin);
    return false;
}

bool ElementReaderImpl::OpPop() {
    ElementBuilderImpl& e = *mp_element;
    size_t& overflow = m_level_info.back().m_q_overflow;
    if (overflow > 0) {
        --overflow;
    } else if (!e.PopState()) {
        return true;  // a Q at the bottom of the stack does nothing
    }
    e.Finish(Element::e_group_end);
    return false;
}

bool ElementReaderImpl::OpDash() {
    if (Argc() < 2) return true;
    SDF::Obj* arr = Arg(2, 0);
    const double phase = Num(2, 1);
    if (!arr->IsArray()) arr->GetAt(0);  // the type error of a non-array
    std::vector<double> dashes;
    const UInt64 n = arr->Size();
    dashes.reserve(size_t(n));
    for (UInt32 i = 0; i < n; ++i) dashes.push_back(arr->GetAt(i)->GetNumber());
    mp_element->State().SetDashPattern(dashes, phase);
    return true;
}

// --- Paths ---

bool ElementReaderImpl::OpPath(char op, size_t, const char*) {
    ElementBuilderImpl& e = *mp_element;
    const size_t argc = Argc();
    switch (op) {
        case 'm':
        case 'l': {
            if (argc < 2) return true;
            const double p[2] = {Num(2, 0), Num(2, 1)};
            if (e.AddSegment(op == 'm' ? Element::e_moveto : Element::e_lineto, p, 2)) {
                e.m_cur_x = p[0];
                e.m_cur_y = p[1];
                if (op == 'm') {
                    e.m_start_x = p[0];
                    e.m_start_y = p[1];
                }
            }
            return true;
        }
        case 'c': {
            if (argc < 6) return true;
            const double p[6] = {Num(6, 0), Num(6, 1), Num(6, 2), Num(6, 3), Num(6, 4), Num(6, 5)};
            if (e.AddSegment(Element::e_cubicto, p, 6)) {
                e.m_cur_x = p[4];
                e.m_cur_y = p[5];
            }
            return true;
        }
        case 'v': {
            if (argc < 4) return true;
            const double p[6] = {e.m_cur_x, e.m_cur_y, Num(4, 0), Num(4, 1), Num(4, 2), Num(4, 3)};
            if (e.AddSegment(Element::e_cubicto, p, 6)) {
                e.m_cur_x = p[4];
                e.m_cur_y = p[5];
            }
            return true;
        }
        case 'y': {
            if (argc < 4) return true;
            const double x3 = Num(4, 2), y3 = Num(4, 3);
            const double p[6] = {Num(4, 0), Num(4, 1), x3, y3, x3, y3};
            if (e.AddSegment(Element::e_cubicto, p, 6)) {
                e.m_cur_x = x3;
                e.m_cur_y = y3;
            }
            return true;
        }
        case 'h':
            if (e.AddSegment(Element::e_closepath, nullptr, 0)) {
                e.m_cur_x = e.m_start_x;
                e.m_cur_y = e.m_start_y;
            }
            return true;
        case 'r': {
            if (argc < 4) return true;
            const double p[4] = {Num(4, 0), Num(4, 1), Num(4, 2), Num(4, 3)};
            if (e.AddSegment(Element::e_rect, p, 4)) {
                e.m_cur_x = e.m_start_x = p[0];
                e.m_cur_y = e.m_start_y = p[1];
            }
            return true;
        }
        default:
            return true;
    }
}

bool ElementReaderImpl::OpPaint(bool close, bool stroke, bool fill, bool winding) {
    ElementBuilderImpl& e = *mp_element;
    if (close && e.AddSegment(Element::e_closepath, nullptr, 0)) {
        e.m_cur_x = e.m_start_x;
        e.m_cur_y = e.m_start_y;
    }
    e.m_stroke = stroke;
    e.m_fill = fill;
    e.m_winding = winding;
    e.Finish(Element::e_path);
    return false;
}

// --- Colour ---

ColorSpace ElementReaderImpl::Substitute(const ColorSpace& cs) const {
    const ElementBuilderImpl& e = *mp_element;
    if (!e.m_has_default_cs) return cs;
    const auto default_of = [&e](const ColorSpace& device) -> const ColorSpace* {
        switch (device.GetType()) {
            case ColorSpace::e_device_gray: return &e.m_default_gray;
            case ColorSpace::e_device_rgb: return &e.m_default_rgb;
            case ColorSpace::e_device_cmyk: return &e.m_default_cmyk;
            default: return nullptr;
        }
    };
    if (const ColorSpace* replacement = default_of(cs)) return *replacement;
    const ColorSpace::Type type = cs.GetType();
    if (type != ColorSpace::e_indexed && type != ColorSpace::e_pattern) return cs;
    const ColorSpace base = cs.GetBaseColorSpace();
    const ColorSpace* replacement = base ? default_of(base) : nullptr;
    if (!replacement || *replacement == base) return cs;
    return cs.WithBaseColorSpace(*replacement);
}

bool ElementReaderImpl::OpDeviceColor(bool stroke, int components) {
    if (Argc() < size_t(components)) return true;
    ElementBuilderImpl& e = *mp_element;
    const size_t n = size_t(components);
    ColorPt color;
    color.SetColorantNum(components);
    for (size_t k = 0; k < n; ++k) color.Set(int(k), Clamp01(Num(n, k)));
    const ColorSpace& cs = components == 1   ? e.m_default_gray
                           : components == 3 ? e.m_default_rgb
                                             : e.m_default_cmyk;
    GStateImpl& gs = e.State();
    if (stroke) {
        gs.SetStrokeColorSpaceOnly(cs);
        gs.SetStrokeColor(PatternColor(), color);
    } else {
        gs.SetFillColorSpaceOnly(cs);
        gs.SetFillColor(PatternColor(), color);
    }
    return true;
}

bool ElementReaderImpl::OpColorSpace(bool stroke) {
    if (Argc() < 1) return true;
    SDF::Obj* operand = Arg(1, 0);
    if (!operand->IsName() && !operand->IsArray()) return true;
    // A space that can't be resolved or is broken skips the operator.
    ColorSpace cs = ColorSpace::Empty();
    try {
        if (operand->IsName()) {
            const ColorSpace::Type family = ColorSpace::FamilyOfName(operand->GetName());
            if (family <= ColorSpace::e_device_cmyk || family == ColorSpace::e_pattern) {
                cs = ColorSpace::FromFamily(family);
            } else {
                SDF::Obj* res = m_resources.GetColorSpace(NameArg(1, 0), false);
                if (!res) return true;
                cs = ColorSpace(res);
            }
        } else {
            cs = ColorSpace(operand);
        }
        if (!cs) return true;
        cs = Substitute(cs);
    } catch (const Common::Exception&) {
        return true;
    }
    GStateImpl& gs = mp_element->State();
    if (stroke)
        gs.SetStrokeColorSpace(cs);
    else
        gs.SetFillColorSpace(cs);
    return true;
}

bool ElementReaderImpl::OpColor(bool stroke, bool allow_pattern) {
    const size_t argc = Argc();
    if (argc < 1) return true;
    GStateImpl& gs = mp_element->State();
    if (!allow_pattern) {
        const size_t n = TopNumbers(0);
        if (n == 1 || n == 3 || n == 4) {
            ColorPt color;
            color.SetColorantNum(int(n));
            for (size_t k = 0; k < n; ++k) color.Set(int(k), Num(n, k));
            if (stroke)
                gs.SetStrokeColor(color);
            else
                gs.SetFillColor(color);
            return true;
        }
    }
    const bool named = Arg(1, 0)->IsName();
    const size_t n = std::min<size_t>(TopNumbers(named ? 1 : 0), ColorPt::kMax);
    ColorPt color;
    color.SetColorantNum(int(n));
    for (size_t k = 0; k < n; ++k) color.Set(int(k), Arg(n + (named ? 1 : 0), k)->GetNumber());
    if (!named) {
        if (stroke)
            gs.SetStrokeColor(color);
        else
            gs.SetFillColor(color);
        return true;
    }
    int level = -1;
    SDF::Obj* pattern = m_resources.GetPattern(NameArg(1, 0), &level);
    if (IsOpen(pattern)) {
        // A pattern that paints itself: white instead of a recursion.
        const ColorSpace rgb = mp_element->m_default_rgb;
        const ColorPt white(1, 1, 1, 0, 3);
        if (stroke) {
            gs.SetStrokeColorSpaceOnly(rgb);
            gs.SetStrokeColor(PatternColor(), white);
        } else {
            gs.SetFillColorSpaceOnly(rgb);
            gs.SetFillColor(PatternColor(), white);
        }
        return true;
    }
    const PatternColor pc{pattern, level};
    if (stroke)
        gs.SetStrokeColor(pc, color);
    else
        gs.SetFillColor(pc, color);
    return true;
}

// --- Objects ---

bool ElementReaderImpl::OpShading() {
    if (Argc() < 1) return true;
    SDF::Obj* shading = m_resources.GetShading(NameArg(1, 0));
    ElementBuilderImpl& e = *mp_element;
    e.mp_xobject = shading;
    e.Finish(Element::e_shading);
    return false;
}

bool ElementReaderImpl::OpXObject() {
    if (Argc() < 1) return true;
    SDF::Obj* xobject = m_resources.GetXObject(NameArg(1, 0));
    if (IsOpen(xobject)) return true;  // forms don't recurse
    if (!xobject->IsStream() && !xobject->IsDict()) return true;
    SDF::Obj* subtype = xobject->FindObj(SDF::e_Subtype);
    const char* kind;
    if (subtype && subtype->IsName()) {
        kind = subtype->GetName();
    } else {
        kind = xobject->FindObj(SDF::e_BitsPerComponent) ? "Image" : "Form";
        xobject->PutName(SDF::e_Subtype, kind);
    }
    ElementBuilderImpl& e = *mp_element;
    if (std::strcmp(kind, "Image") == 0) {
        e.Finish(Element::e_image);
    } else if (std::strcmp(kind, "Form") == 0) {
        SDF::Obj* sub2 = xobject->FindObj(SDF::e_Subtype2);
        if (sub2 && sub2->IsName() && std::strcmp(sub2->GetName(), "PS") == 0) return true;
        e.Finish(Element::e_form);
    } else {
        return true;
    }
    e.mp_xobject = xobject;
    return false;
}

bool ElementReaderImpl::OpMarkedContent(Element::Type kind, bool with_properties) {
    const size_t n = with_properties ? 2 : 1;
    if (Argc() < n) return true;
    ElementBuilderImpl& e = *mp_element;
    if (with_properties) {
        SDF::Obj* props = Arg(2, 1);
        if (props->IsName()) {
            e.SetMCProperties(m_resources.GetProperties(NameArg(2, 1)), false);
            PopObj();
        } else if (props->IsDict()) {
            e.SetMCProperties(PopObjNoDelete(), true);
        } else {
            e.SetMCProperties(nullptr, false);
            PopObj();
        }
    } else {
        e.SetMCProperties(nullptr, false);
    }
    e.SetMCTag(PopObjNoDelete());
    e.Finish(kind);
    return false;
}

// --- Text ---

bool ElementReaderImpl::OpTextFont() {
    if (Argc() < 2) return true;
    const double size = Num(2, 1);
    mp_element->State().SetFont(m_resources.GetFontHandle(NameArg(2, 0)), size);
    return true;
}

bool ElementReaderImpl::OpTextMove(double tx, double ty) {
    ElementBuilderImpl& e = *mp_element;
    e.m_line_offset_x = tx;
    e.m_line_offset_y = ty;
    e.m_line_x += tx;
    e.m_line_y += ty;
    e.m_cur_x = e.m_line_x;
    e.m_cur_y = e.m_line_y;
    e.Finish(Element::e_text_new_line);
    return false;
}

bool ElementReaderImpl::OpNextLine() {
    ElementBuilderImpl& e = *mp_element;
    const double leading = e.State().GetLeading();
    e.m_line_offset_x = 0;
    e.m_line_offset_y = -leading;
    e.m_line_y -= leading;
    e.m_cur_x = e.m_line_x;
    e.m_cur_y = e.m_line_y;
    e.Finish(Element::e_text_new_line);
    return false;
}

void ElementReaderImpl::ShowString(double adjustment) {
    ElementBuilderImpl& e = *mp_element;
    e.m_start_x = e.m_cur_x;
    e.m_start_y = e.m_cur_y;
    e.m_pos_adjustment = adjustment;
    e.UpdateTextMetrics();
    e.Finish(Element::e_text);
}

bool ElementReaderImpl::OpShowString() {
    ++m_text_operators;
    if (Argc() < 1) return true;
    ElementBuilderImpl& e = *mp_element;
    if (!e.State().GetFont() || !Arg(1, 0)->IsString()) return true;
    TakeTextOperand();
    const double adjustment = e.m_pending_adjustment;
    e.m_pending_adjustment = 0;
    ShowString(adjustment);
    return false;
}

void ElementReaderImpl::TakeTextOperand() {
    SDF::Obj* text = PopObjNoDelete();
    Recycle(mp_element->ExchangeTextObject(text));
}

bool ElementReaderImpl::OpShowArray() {
    ++m_text_operators;
    if (Argc() < 1) return true;
    ElementBuilderImpl& e = *mp_element;
    if (!e.State().GetFont() || !Arg(1, 0)->IsArray()) return true;
    TakeTextOperand();
    e.m_pos_adjustment = e.m_pending_adjustment;
    e.m_pending_adjustment = 0;
    return !WalkTextArray();
}

bool ElementReaderImpl::WalkTextArray() {
    ElementBuilderImpl& e = *mp_element;
    SDF::Obj* arr = e.mp_text_obj;
    double adjustment = e.m_pos_adjustment;
    while (arr && e.m_array_index < e.m_array_size) {
        SDF::Obj* item = arr->GetAt(e.m_array_index++);
        if (item->IsNumber()) {
            adjustment += item->GetNumber();
            e.State().MarkChanged(GState::e_text_pos_offset);
        } else if (item->IsString()) {
            e.mp_shown = item;
            ShowString(adjustment);
            return true;
        }
    }
    e.m_pos_adjustment = 0;
    if (adjustment != 0) e.m_pending_adjustment = adjustment;
    return false;
}

bool ElementReaderImpl::OpNextLineShow(bool with_spacing) {
    ++m_text_operators;
    const size_t n = with_spacing ? 3 : 1;
    if (Argc() < n) return true;
    ElementBuilderImpl& e = *mp_element;
    if (with_spacing) {
        e.State().SetWordSpacing(Num(3, 0));
        e.State().SetCharSpacing(Num(3, 1));
    }
    if (e.State().GetFont() && Arg(1, 0)->IsString()) {
        TakeTextOperand();
        e.m_string_pending = true;
    }
    return OpNextLine();
}

void ElementReaderImpl::ResetElement() {
    ElementBuilderImpl& e = *mp_element;
    e.State().ClearChangeMatrix();
    e.m_pending_adjustment = 0;
    switch (e.m_element_type) {
        case Element::e_path:
            if (e.m_ready) {
                e.m_segments.clear();
                e.m_points.clear();
                e.m_clip = false;
            }
            break;
        case Element::e_text:
            e.m_has_text_matrix = false;
            e.m_segments.clear();
            e.m_points.clear();
            e.m_code_sizes.clear();
            e.m_pos_adjustment = 0;
            if (e.mp_text_obj && e.m_array_index < e.m_array_size && e.State().GetFont()) {
                e.ClearKind();
                if (WalkTextArray()) return;
            }
            break;
        case Element::e_text_new_line:
            e.m_has_text_matrix = false;
            if (e.m_string_pending) {
                e.m_string_pending = false;
                if (e.State().GetFont() && e.mp_shown) {
                    ShowString(0);
                    return;
                }
            }
            break;
        case Element::e_inline_image:
            e.m_inline_data.clear();
            break;
        case Element::e_marked_content_end:
        case Element::e_marked_content_point:
            e.ReleaseMarkedContent();
            break;
        default:
            break;
    }
    e.ClearKind();
}

}  // namespace lum::PDF

// The font side of a style: the name as the XML shows it and the serif flag, read through the
// font that the style's font key stands for.
#include <cstring>
#include <string>

#include "Common/Exception.h"
#include "Common/UString.h"
#include "PDF/Font/Font.h"
#include "PDF/Text/TextExtractorImpl.h"
#include "PDF/TextExtractor.h"

namespace lum::PDF {

UString TextExtractor::Style::GetFontName() const {
    LUM_CHECK(mp_imp, "Style is empty");
    std::string name = Font(mp_imp->font).GetName();
    // A subset tag (six letters and a plus sign) and a style suffix (",Bold") are cut.
    if (name.size() > 7 && name[6] == '+') name.erase(0, 7);
    const size_t comma = name.find(',');
    if (comma != std::string::npos) name.erase(comma);
    return UString(name.data(), static_cast<int>(name.size()), enc_ascii);
}

bool TextExtractor::Style::IsSerif() const {
    LUM_CHECK(mp_imp, "Style is empty");
    return Font(mp_imp->font).IsSerif();
}

}  // namespace lum::PDF

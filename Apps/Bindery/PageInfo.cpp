#include "Apps/Bindery/PageInfo.h"

#include "Apps/Bindery/Options.h"
#include "Apps/Bindery/WriteText.h"
#include "PDF/Page.h"

namespace lum::Bindery {

std::string FormatPageInfo(const PDF::Page& page) {
    // The order in which the values are taken is fixed: a failure of an earlier one decides
    // what the page reports.
    const double width = page.GetPageWidth();
    const double height = page.GetPageHeight();
    const PDF::Rect crop = page.GetCropBox();
    const PDF::Rect media = page.GetMediaBox();
    const PDF::Page::Rotate rotation = page.GetRotation();

    std::string line;
    for (double v : {width, height, media.x1, media.y1, media.x2, media.y2, crop.x1, crop.y1,
                     crop.x2, crop.y2}) {
        AppendNumber(line, v);
        line += ", ";
    }
    line += std::to_string(PDF::Page::RotationToDegrees(rotation));
    line += '\n';
    return line;
}

void WritePageInfo(Options& opt, const PDF::Page& page) {
    const std::string line = FormatPageInfo(page);
    if (opt.m_verbosity >= 3) {
        static const std::string header = "width, height, media box, crop box, page rotation:\n";
        WriteText(opt, UString(header));
    }
    WriteText(opt, UString(line));
}

}  // namespace lum::Bindery

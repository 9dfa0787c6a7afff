#include "Apps/Bindery/PageText.h"

#include <cmath>
#include <string>

#include "Apps/Bindery/Options.h"
#include "Apps/Bindery/TextRuns.h"
#include "Apps/Bindery/WriteText.h"
#include "Apps/Bindery/misc/ParsePages.h"
#include "Common/UString.h"
#include "PDF/Page.h"
#include "PDF/Rect.h"
#include "PDF/TextExtractor.h"

namespace lum::Bindery {

unsigned TextFlags(const Options& opt) {
    unsigned flags = 0;
    if (opt.m_noligatures) flags |= PDF::e_no_ligatures;
    if (opt.m_no_dup_remove) flags |= PDF::e_no_dup_remove;
    if (opt.m_punct_break) flags |= PDF::e_punct_break;
    if (opt.m_remove_hidden_text) flags |= PDF::e_remove_hidden_text;
    if (opt.m_no_invisible_text) flags |= PDF::e_no_invisible_text;
    return flags;
}

unsigned XmlFlags(const Options& opt) {
    unsigned flags = 0;
    if (opt.m_xml_words_as_elements) flags |= PDF::e_xml_words_as_elements;
    if (opt.m_output_bbox) flags |= PDF::e_xml_output_bbox;
    if (opt.m_xml_output_styles) flags |= PDF::e_xml_output_styles;
    if (IsUtf16Encoding(opt)) flags |= PDF::e_xml_utf16;
    return flags;
}

namespace {

void WriteCount(Options& opt, size_t count) {
    opt.m_text = UString(std::to_string(count) + "\n");
    WriteText(opt, opt.m_text);
}

// One line of the list per word: with output_bbox its box as x1, y1, width, height first.
void WriteWordList(Options& opt, const PDF::TextExtractor& extractor) {
    std::string head;
    for (auto line = extractor.GetFirstLine(); line.IsValid(); line = line.GetNextLine()) {
        for (auto word = line.GetFirstWord(); word.IsValid(); word = word.GetNextWord()) {
            head.clear();
            if (opt.m_output_bbox) {
                const PDF::Rect r = word.GetBBox();
                for (const double v : {r.x1, r.y1, std::fabs(r.x2 - r.x1), std::fabs(r.y2 - r.y1)}) {
                    AppendNumber(head, v);
                    head += ", ";
                }
            }
            opt.m_text = UString(head.data(), static_cast<int>(head.size()), enc_ascii);
            opt.m_text.Append(word.GetString(), word.GetStringLen());
            opt.m_text.Append(Unicode('\n'));
            WriteText(opt, opt.m_text);
        }
    }
}

}  // namespace

void WritePageText(Options& opt, const PDF::Page& page, PDF::TextExtractor& extractor) {
    PDF::Rect clip;
    bool has_clip = false;
    if (!opt.m_clip.empty()) {
        has_clip = ParseClipBox(opt.m_clip, clip);
        if (!has_clip)
            SendMessage(opt, e_msg_error,
                        "An illegal value was specified for 'clip' option: " + opt.m_clip + "\n");
    }
    extractor.Begin(page, has_clip ? &clip : nullptr, TextFlags(opt));

    if (opt.m_wordcount) {
        WriteCount(opt, extractor.GetWordCount());
    } else if (opt.m_charcount) {
        // Counted on the dehyphenated text whatever nodehyphen says, in 16-bit units.
        UString text;
        extractor.GetAsText(text, true);
        WriteCount(opt, size_t(text.GetLength()));
    } else if (opt.m_format == "layout") {
        // The analysis alone: nothing is written.
    } else if (opt.m_format == "xml") {
        extractor.GetAsXML(opt.m_text, XmlFlags(opt));
        WriteText(opt, opt.m_text);
    } else if (opt.m_format == "wordlist") {
        WriteWordList(opt, extractor);
    } else if (opt.m_format == "textruns") {
        // Content order, from the elements themselves, not from the store.
        WriteTextRuns(opt, page);
    } else {
        if (opt.m_format != "plain") SendMessage(opt, e_msg_error, "Unknown output format");
        extractor.GetAsText(opt.m_text, !opt.m_nodehyphen);
        WriteText(opt, opt.m_text);
    }
}

}  // namespace lum::Bindery

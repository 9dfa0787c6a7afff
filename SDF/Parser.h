#pragma once
// One stack machine for every PDF syntax of the program: the file (object, cross-reference and
// rebuild parsers), object streams, page content, CMaps. It turns bytes into values on an
// operand stack and hands every word it does not know back to the caller, who decides whether
// it is an operator, the end of an object or rubbish. A container that is not closed is
// closed by the next word the enclosing level understands; that is the root of the reader's
// tolerance of damaged files.
#include <string>
#include <vector>

#include "Common/Limits.h"
#include "Common/Types.h"
#include "Filters/FilterReader.h"
#include "SDF/Obj.h"

namespace lum::SDF {

class DocImpl;

class Parser {
public:
    // Character classes, one flag set per byte.
    enum CharClass : UInt8 {
        e_white = 1,      // 0x00 0x09 0x0A 0x0C 0x0D 0x20
        e_word_end = 2,   // white space, delimiters and '%'
        e_delimiter = 4,  // ( ) / < > [ ] { }
        e_name_plain = 8, // bytes a name holds without a # escape when written
    };
    static const UInt8 gl_char_class[256];
    static bool IsWhite(int c) noexcept { return c >= 0 && (gl_char_class[c] & e_white); }
    static bool IsWordEnd(int c) noexcept { return c >= 0 && (gl_char_class[c] & e_word_end); }
    static bool IsDelimiter(int c) noexcept { return c >= 0 && (gl_char_class[c] & e_delimiter); }

    explicit Parser(DocImpl* doc);
    // Reads `stream`, which the caller keeps alive and owns.
    Parser(DocImpl* doc, Filters::Filter* stream);
    virtual ~Parser();
    Parser(const Parser&) = delete;
    Parser& operator=(const Parser&) = delete;

    // Reads one token. When it starts a value, reads the whole value, pushes it on the operand
    // stack and answers true. Else answers false and leaves the word in the token buffer; at
    // the end of the stream the word is empty.
    bool GetObj();

    // The word that the last GetObj stopped at, NUL-terminated ("" at the end of the stream).
    const char* GetToken() const noexcept { return reinterpret_cast<const char*>(m_token.data()); }
    size_t GetTokenSize() const noexcept { return m_token_size; }

    // Reads from `stream` (not owned, may be null) from now on; what was read of the old one
    // is handed back to it.
    void AttachStream(Filters::Filter* stream);
    Filters::Filter* GetStream() const noexcept { return m_stream.GetAttachedFilter(); }
    Filters::FilterReader& GetReader() noexcept { return m_stream; }

    // Operand stack: clear destroys every value that does not belong to the table.
    std::vector<Obj*>& GetOperandStack() noexcept { return m_operand_stack; }
    void ClearStack() noexcept;
    void PopObj() noexcept;        // pops the top value and destroys it
    Obj* PopObjNoDelete() noexcept;  // pops the top value and hands it out (null when empty)

    // Call before each top-level read: nesting counts open containers of one value.
    void ResetNesting() noexcept { m_max_nesting = 0; }

    // Empties the token buffer and the stack, hands unread bytes back to the filter and
    // rewinds it (the store calls this before a rebuild).
    void Reset();

    // Finds the header ("%" letters "-" digits "." digits) in the first 4096 bytes of the
    // stream and leaves the stream behind its last digit; answers the header text.
    std::string SkipHeader();

    // The header search that the table's reading and the rebuild share, over `n` bytes: the
    // first match of "%" letters "-" digits "." digits (C-locale letters and digits). A percent
    // without letters behind it skips two bytes; a partial match restarts where it stopped.
    // True, with the match in [start, end), when there is one that ends before the last byte
    // and holds at most `max_length` bytes; false for no match, or a first match that fails
    // either test.
    static bool FindHeader(const UInt8* buf, size_t n, size_t max_length, size_t& start,
                           size_t& end) noexcept;

    // Skips white space and comments exactly as between tokens.
    void SkipWhiteSpaceAndComments() { SkipWhiteSpaceAndComments(m_stream); }
    static void SkipWhiteSpaceAndComments(Filters::FilterReader& reader);

    // An object number from a number operand, truncated toward zero. A value that no 32-bit
    // number holds (negative, too large) answers 0xFFFFFFFF, which no table reaches. An
    // operand that is no number fails as GetNumber does.
    static UInt32 ToObjNum(const Obj* number);

protected:
    // Called inside a container with a word that is no value. True: the word was consumed as
    // an operator (it may have replaced operands) and the container goes on; false ends it.
    virtual bool ContainerOperator(const char* word);
    // Called with the bytes of every string, before its Str is built.
    virtual void OnString(std::vector<UInt8>& bytes);

    // Pushes a value; fails when the stack would pass its bound. Inline: most operands are
    // numbers read in a few cycles each.
    void Push(Obj* obj) {
        if (m_operand_stack.size() >= Limits::kMaxOperandStack) [[unlikely]]
            PushFailed(obj);
        m_operand_stack.push_back(obj);
    }
    // Destroys a spent value that does not belong to the table, or keeps it for reuse.
    void Recycle(Obj* obj) noexcept;

    std::vector<Obj*> m_operand_stack;
    // Spent operand values, each at most Limits::kMaxSpareOperands (reserved up front, so that
    // keeping one never allocates).
    std::vector<Number*> m_spare_numbers;
    std::vector<Str*> m_spare_strings;
    std::vector<Array*> m_spare_arrays;
    Filters::FilterReader m_stream;
    DocImpl* mp_doc;
    int m_max_nesting = 0;

private:
    // Fresh values for operands: spent ones when there are, else heap objects. Content streams
    // have a number or string per few bytes; a heap object each was a tenth of the page's time.
    Number* MakeNumber(double value);
    Str* MakeString(const std::vector<UInt8>& bytes);
    Array* MakeArray();
    // Keeps a spent number, string or array when there is room; false: the caller deletes it.
    bool KeepSpare(Obj* obj) noexcept;
    // Destroys the value that found the stack full and raises.
    [[noreturn]] void PushFailed(Obj* obj);

    // Reads the token that starts at the reader's position (white space passed over).
    void ReadWord();
    void AppendToken(const UInt8* bytes, size_t n);
    void GrowToken(size_t need);
    // Appends the bytes of a word (up to white space, a delimiter, a percent or the byte
    // kAlsoStopAt) to the token buffer; answers the byte that stopped it, -1 at the end.
    template <int kAlsoStopAt>
    int AppendWordBytes();
    void LexNumber();
    void LexName();
    void LexLiteralString();
    void LexHexString();
    bool LexDict();
    bool LexArray();

    // Token buffer: m_token_size bytes and a NUL; the vector's size is the capacity.
    std::vector<UInt8> m_token;
    size_t m_token_size = 0;
    // Bytes of the string being read, handed to the Str when it is complete.
    std::vector<UInt8> m_string;
};

// Reads a number token as the parser does: 0 for anything that is not entirely a number.
double ParseNumberToken(const char* token, size_t size) noexcept;

}  // namespace lum::SDF

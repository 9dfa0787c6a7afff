#pragma once
// Every bound the code enforces against hostile input, in one place. Each constant says its
// unit and why it has the value it has; README "Limits" lists them for users.
#include <cstddef>
#include <cstdint>

namespace lum::Limits {

// --- Filters ---

// Bytes. One row of a predictor stage (Columns x Colors x BitsPerComponent / 8). The PNG stage
// holds two rows, so this bounds what a hostile /Columns can make us allocate; 16 MiB is a
// row of a million 16-bit CMYK pixels, far beyond any real image or cross-reference stream.
inline constexpr std::size_t kMaxPredictorRowBytes = std::size_t(16) << 20;

// Components. /Colors of a predictor stage. The TIFF stage keeps running values per colour;
// real colour spaces have at most 32 components (DeviceN), so 256 leaves room and stops a
// /Colors of billions.
inline constexpr std::int64_t kMaxPredictorColors = 256;

// Bits. /BitsPerComponent of a predictor stage: samples are read into 32-bit values.
inline constexpr std::int64_t kMaxPredictorBits = 32;

// Pixels. /Columns of a CCITT fax stage. Runs are kept as 16-bit lengths and the decoder
// holds two rows of run positions; 65535 pixels is a row of 5.5 m at 300 dpi, beyond any
// real fax or scan. A stage asking for more fails, and the image with it.
inline constexpr std::int64_t kMaxFaxColumns = 65535;

// Bytes. Rows that a CCITT fax stage repeats after its data ended early, to reach /Rows. A
// hostile /Rows of billions would otherwise make a reader that reads to the end spin through
// terabytes of copies of one row; 256 MiB is a 100,000-row page of 20,000 columns.
inline constexpr std::size_t kMaxFaxRepeatedBytes = std::size_t(256) << 20;

// Bytes. Memory that the codec behind one image stage may hold: a progressive JPEG keeps
// all its coefficients (two bytes a sample), a JBIG2 page its whole bitmap, a JPEG 2000 tile
// its samples. A header claiming 100,000 x 100,000 pixels would ask for tens of GiB; the
// image fails instead. 512 MiB holds a progressive 12,000 x 12,000 colour JPEG.
inline constexpr std::size_t kMaxImageDecoderMemory = std::size_t(512) << 20;

// Memory that jbig2dec may hold while decoding one JBIG2 image: this many times the bytes of the
// image's own Width x Height (the page it draws on is cut to that), and at least
// kMinJBIG2DecoderMemory, for symbol dictionaries shared by many pages. A page header claiming
// 67 million x 60 pixels for a 200 x 200 image would otherwise cost half a GiB and a second of
// clearing, each time.
inline constexpr std::size_t kJBIG2MemoryPerImageByte = 16;
inline constexpr std::size_t kMinJBIG2DecoderMemory = std::size_t(64) << 20;

// Messages. That jbig2dec may report while decoding one JBIG2 image, about one for each
// symbol and segment: real dictionaries hold tens of thousands of symbols, while a hostile
// one claims 16 million and has them decoded from no data, for seconds. Beyond the bound the
// decoder gets no more memory, and the image fails.
inline constexpr std::size_t kMaxJBIG2DecoderMessages = std::size_t(1) << 20;

// Components. Of one JPEG 2000 codestream (the format allows 16,384). OpenJPEG keeps state
// per component and tile; images in PDF have at most a DeviceN's 32 colorants and an alpha.
inline constexpr std::uint32_t kMaxJPXComponents = 64;

// Tiles x components of one JPEG 2000 codestream. OpenJPEG allocates about a kilobyte of
// coding parameters for each before it decodes anything, so a header of 65,535 tiles of 64
// components would cost 4 GiB; this bound keeps it near 128 MiB.
inline constexpr std::uint64_t kMaxJPXTileComponents = std::uint64_t(1) << 17;

// Pixels. Area of one JPEG 2000 image (16,384 x 16,384). Beyond it even a decoding in strips
// would take minutes for a header that costs a few bytes.
inline constexpr std::uint64_t kMaxJPXPixels = std::uint64_t(1) << 28;

// --- Objects and parser ---

// Levels. Open arrays and dictionaries inside one value: the 1000th level fails. Parsing and
// every walk of a value (destruction, cloning, hashing, comparing) recurse per level, so this
// is what keeps a hostile "[[[[..." from exhausting the call stack.
inline constexpr int kMaxNestingLevels = 1000;

// Bytes. One token: a word, a name or a string. Tokens are otherwise bounded only by the
// input, and the input of a content or object stream may be a decompression bomb; real
// strings (even inline image data) stay far below this.
inline constexpr std::size_t kMaxTokenBytes = std::size_t(256) << 20;

// Elements. Values on one parser's operand stack, which holds the elements of every open
// container. Each element costs a heap object, so a bomb of "0 0 0 ..." inside one array
// would otherwise turn 1 GiB of text into tens of GiB of objects. Real arrays (page trees,
// widths, cross-reference indexes) stay below a million.
inline constexpr std::size_t kMaxOperandStack = std::size_t(8) << 20;

// Values. Spent numbers, strings and arrays that a parser keeps of each kind to reuse for the
// next operands instead of a heap object each. A content stream rarely has more than a few
// dozen operands at once; 256 of each covers a long TJ array and keeps the spares small.
inline constexpr std::size_t kMaxSpareOperands = 256;

// Bytes. A spent string is kept for reuse only when its buffer holds at most this many: one
// huge string must not stay allocated for the rest of the stream.
inline constexpr std::size_t kMaxSpareStringBytes = 4096;

// Values. A spent array is kept for reuse only when its storage holds at most this many: a
// TJ array rarely has a few hundred; one of a million must be given back.
inline constexpr std::size_t kMaxSpareArrayItems = 4096;

// Fonts. Opened fonts a content reader remembers by name per resource level; a name past
// these is looked up each time. A page names a handful; the bound keeps the linear search
// short on a page that names thousands.
inline constexpr std::size_t kMaxKnownFontsPerLevel = 64;

// Objects. Pairs read from the head of one object stream (its N). Object numbers in a
// rebuilt table stop at 2^20 and each pair needs a distinct number to be of use, so more
// pairs than this can only be hostile; the rest of the head is ignored.
inline constexpr std::int64_t kMaxObjStmObjects = std::int64_t(1) << 20;

// Comparisons. Values compared by IsEqualValue in one call. References may form cycles and
// shared subgraphs ([1 0 R 1 0 R] nested a few dozen times is 2^n paths), so a comparison
// that runs past this answers "not equal" instead of running for ever.
inline constexpr long kMaxCompareSteps = 1000000;

// Stages. Decoders named in one stream's Filter array. Every stage pulls from the one below,
// so reading and destroying a chain recurse once per stage; real files use one or two, and
// peers refuse more than about 25.
inline constexpr std::uint64_t kMaxFilterStages = 32;

// --- Cross-reference and document store ---

// Entries. The largest table that a cross-reference section may ask for: its Size, the end of
// a subsection, the end of a stream's Index range, a reference in a trailer; also the records
// read from all cross-reference streams of one file. A slot costs a pointer, so this is 64 MiB
// of slots; the largest real files hold a few million objects. A section asking for more
// counts as damaged, and the table is rebuilt from the file's bytes instead.
inline constexpr std::uint64_t kMaxXRefEntries = std::uint64_t(1) << 23;

// Entries. Each entry that the cross-reference data makes is an object of about 50 bytes, made
// for a row or a record, so a file can't honestly make more of them than it has bytes; tables
// up to this many entries are accepted whatever the file's size. Stops a small stream whose
// Index asks for millions of records past the end of its data.
inline constexpr std::uint64_t kMinXRefEntryBound = 65536;

// Object numbers. The rebuild makes entries only below this number: it scans objects it can't
// trust, and a single "4000000000 0 obj" must not make a table of billions. A header above it
// ends the scan; a reference above it fails the object that holds it.
inline constexpr std::uint64_t kMaxRebuiltObjNum = std::uint64_t(1) << 20;

// Loads. Objects whose loading is under way at once on one thread: loading one object can
// load another (an object stream's indirect Length, a reference used as an operand). Real
// files nest two or three; the bound stops chains built to exhaust the stack, and a load of
// an object that is already being loaded fails as a loop.
inline constexpr std::size_t kMaxNestedLoads = 64;

// --- Security ---

// Crypt filters. Entries of an Encrypt dictionary's CF that become crypt handlers. Each one
// tests the password on its own (a revision 6 test costs up to 288 rounds of AES and SHA-2), so
// a hostile CF with thousands of entries would stall the opening; real files have one or two.
// More than this fails the security step, as a damaged Encrypt dictionary would.
inline constexpr std::size_t kMaxCryptFilters = 32;

// --- Document, pages ---

// Pages. A page count (the root's Count) above this is taken as this: the count drives the
// default page list, and a hostile Count of two billion would otherwise select two billion
// numbers that are each looked up and reported. Real documents stay far below it.
inline constexpr std::int32_t kMaxPageCount = 1 << 20;

// Numbers. Page numbers above the page count that one range of the page list selects are
// each looked up and reported as not found; past this many the rest are left out and reported
// in one line ("2147483647-" on a ten-page file would otherwise print two billion lines).
inline constexpr std::int64_t kMaxMissingPageReports = 10000;

// Levels. Depth of the page tree walk and of a page's Parent chain. The walk keeps its own
// stack (a few dozen bytes a level) and a set of the nodes on its path, so depth costs memory,
// not recursion: peers open chains of thousands of levels, and so does this. The cap bounds
// the quadratic worst case of a hostile chain with a page at every level (each page's
// inherited attributes climb the whole chain); real trees are a handful of levels deep.
inline constexpr int kMaxPageTreeDepth = 10000;

// --- Page content ---

// Levels. Forms, Type 3 glyphs and patterns open at once in one content reader. Each level
// holds a decoded stream, a state stack and an element; forms can't paint themselves (the
// open set stops cycles), but a chain of distinct forms nested a thousand deep is only a
// waste. A level past the bound is opened empty. Peers stop at 40 to 100.
inline constexpr int kMaxContentLevels = 64;

// States. Graphics states pushed by q on one level. A state is a flat record of under 1 KiB,
// so 10,000 nested q would still fit, but content in a loop of q without Q would grow without
// end. A q past the bound yields its element and pushes nothing; the matching Q pops nothing.
inline constexpr std::size_t kMaxStateDepth = 2048;

// Doubles. Coordinates of one path between its first segment and its painting operator. Each
// "0 0 l" adds two doubles from five bytes of content, so a decompression bomb of path
// operators would otherwise hold several times its decoded size. Segments past the bound
// are dropped; real paths (maps, charts) stay below a million points.
inline constexpr std::size_t kMaxPathDoubles = std::size_t(16) << 20;

// Characters. Characters positioned in one shown string: each costs two doubles and a code
// size, so a 256 MiB string would need 4 GiB of positions. Characters past the bound are not
// shown; real strings are a line or a paragraph.
inline constexpr std::size_t kMaxStringChars = std::size_t(4) << 20;

// Bytes. Decoded data of one inline image kept in its element, and read through its filter
// chain. The size comes from the image's W, H and BPC, which a hostile image sets to billions;
// real inline images are a few KiB (the standard recommends under 4 KiB). Data past the bound
// is skipped, and the decoder chain is not read further.
inline constexpr std::size_t kMaxInlineImageBytes = std::size_t(64) << 20;

// --- Fonts ---

// Entries. Metrics held from the W or the W2 array of one composite font: a value of a list
// counts one, a group one more. Ranges are not expanded (a range "0 4000000000 500" costs two),
// so only the array's own length grows the table; a full font of 65,536 CIDs written as one
// group per CID needs 131,072. Groups past the bound keep the default metrics.
inline constexpr std::size_t kMaxCIDMetricEntries = std::size_t(1) << 19;

// Fonts. Font objects under construction at once on one thread: a composite font makes its
// descendant while it is being made, and a DescendantFonts entry that names a composite font
// (itself, or another that names the first) would recurse without end. Real fonts nest two.
inline constexpr int kMaxFontNesting = 4;

// Bytes. An embedded font program read for FreeType, which holds it whole. The declared size
// (Length1 and the others) only sizes the first buffer; a decompression bomb in a font file
// would otherwise be read whole. The largest real programs (CJK fonts
// with tens of thousands of glyphs) stay below 32 MiB.
inline constexpr std::size_t kMaxFontProgramBytes = std::size_t(64) << 20;

// --- Command line and batch walk ---

// Levels. Folders below one named on the command line, walked with --subfolders. Each level
// is a recursive call and a longer path; real trees are a few dozen deep, and a tree built to
// be deeper (or a link loop the inode check can't see, as on some network shares) is cut here.
inline constexpr std::size_t kMaxFolderDepth = 256;

// --- Text engine ---

// Glyphs. Glyphs captured on one page; the rest of the page's text is passed over. A glyph
// costs about 400 bytes through the layout and the store, so this keeps a page below half a
// GiB; a dense real page holds a few thousand, a book set in one page a few hundred thousand.
inline constexpr std::uint32_t kMaxPageGlyphs = std::uint32_t(1) << 20;

// Passes. Rounds of the line joining of one text direction, which repeats until a round
// joins nothing. Each round that joins removes a block, so a page built to join one pair per
// round would cost rounds times blocks; real pages settle in two or three rounds.
inline constexpr int kMaxReflowPasses = 64;

// Comparisons. Box tests of the hidden-text switch on one page: each run looks through the
// images drawn after it, and each glyph of a covered run through the images from the cover on,
// so a page of n runs and n tiny images costs n squared. Past the bound the remaining runs
// are kept whole (nothing is lost); 64 Mi tests take well under a tenth of a second, and a
// real page with a scanned image and its text needs a few thousand.
inline constexpr std::uint64_t kMaxOccluderTests = std::uint64_t(1) << 26;

// --- Fonts, CMaps and the resource file ---

// Bytes. Dictionary of an LZMA stream (the `_lumLZMA` filter), which liblzma allocates whole
// when the decoder starts. The resource file uses 16 MiB; any stream of a PDF may name the
// filter, so a hostile header asking for 4 GiB fails the stream instead.
inline constexpr std::uint32_t kMaxLZMADictionaryBytes = std::uint32_t(64) << 20;

// Levels. CMaps built inside one another on a thread: a CMap builds its parent (usecmap,
// UseCMap) while it is built, and a stream may name itself as its own UseCMap. The predefined
// CMaps nest two deep; deeper chains fail the CMap that would pass the bound.
inline constexpr int kMaxCMapNesting = 16;

// Mappings. Entries of one CMap (singles and range ends). The largest predefined CMap has
// about 20,000 and a ToUnicode of two-byte codes needs at most 65,536; peers stop near 160,000.
// A CMap that passes the bound is damaged, and so the same as none.
inline constexpr std::size_t kMaxCMapEntries = std::size_t(1) << 20;

// UTF-16 units. One destination of a bfchar or bfrange. Callers ask for at most ten units; a
// longer destination keeps its first units, so a code mapped to ten thousand units costs no
// more than this.
inline constexpr std::uint32_t kMaxCMapValueUnits = 256;

// Values (32-bit). All destinations of one CMap together: with kMaxCMapEntries alone a hostile
// CMap of long destinations could still ask for a gigabyte. A full two-byte ToUnicode of ten
// units per code needs 655,360.
inline constexpr std::size_t kMaxCMapValues = std::size_t(4) << 20;

// Levels. Type 3 glyphs measured inside one another: a glyph that shows text in a Type 3 font
// is measured by running that glyph's content. A glyph showing itself is caught by the set of
// glyphs in progress; this bounds chains through many fonts. Real fonts nest one level.
inline constexpr int kMaxType3GlyphNesting = 8;

// Levels. Type 0 fonts made inside one another: a Type 0 font makes its descendant when it is
// made, and a hostile descendant may be a Type 0 font again, or the font itself. A real
// descendant is a CIDFont, one level down; a deeper chain fails the font.
inline constexpr int kMaxType0Nesting = 4;

// --- Colour spaces and functions ---

// Levels. Functions inside functions (stitching) and colour spaces inside colour spaces
// (an Indexed base, an alternate space). Real files nest two or three; a reference cycle
// would otherwise nest for ever.
inline constexpr int kMaxColorNesting = 8;

// Values. The sample table of one sampled function (the product of its Size entries times its
// outputs). A table is read whole, at 8 bytes a value, so this keeps it at 8 MiB and its
// reading at a few milliseconds; a hostile Size asking for 2^31 points is refused instead of
// read. Real tint tables (4 inputs of 16 to 17 samples, 4 outputs) hold about 300,000.
inline constexpr std::uint64_t kMaxFunctionSamples = std::uint64_t(1) << 20;

// Inputs. A sampled function whose point lies inside a cell along more inputs than this is
// read by its nearest sample instead of interpolating between the 2^inputs corners.
inline constexpr int kMaxInterpolatedInputs = 8;

// Functions. The parts of one stitching function. With parts shared through the document's
// table, a tree that names one function many times costs one reading of it; this bounds the
// width of each node of a tree of distinct functions.
inline constexpr std::uint64_t kMaxStitchedFunctions = 256;

// Tokens and values. The program of one PostScript calculator function, and its operand
// stack (the standard's own limit is 100). The program has no loops, so its length bounds the
// work of one evaluation.
inline constexpr std::size_t kMaxCalculatorTokens = 65536;
inline constexpr std::size_t kMaxCalculatorStack = 100;

// Bytes. The text of one calculator program, comments and white space included: a stream of
// blanks (or a decompression bomb of them) is refused instead of read to its end.
inline constexpr std::size_t kMaxCalculatorBytes = std::size_t(1) << 20;

}  // namespace lum::Limits

"""The fourteen standard fonts: their metrics, their AFM and the URW font that stands in for
their program. Ascent, descent and bounding box are the program's own values, not the AFM's."""

# name, ascent, descent, bounding box, descriptor flags, URW font file
FONTS = [
    ("Times-Roman", 683, -217, (-168, -218, 1000, 898), 34, "NimbusRoman-Regular"),
    ("Times-Bold", 683, -217, (-168, -218, 1000, 935), 34, "NimbusRoman-Bold"),
    ("Times-Italic", 683, -217, (-169, -217, 1010, 883), 98, "NimbusRoman-Italic"),
    ("Times-BoldItalic", 683, -217, (-200, -218, 996, 921), 98, "NimbusRoman-BoldItalic"),
    ("Helvetica", 718, -207, (-166, -225, 1000, 931), 32, "NimbusSans-Regular"),
    ("Helvetica-Bold", 718, -207, (-170, -228, 1003, 962), 32, "NimbusSans-Bold"),
    ("Helvetica-Oblique", 718, -207, (-170, -225, 1116, 931), 96, "NimbusSans-Italic"),
    ("Helvetica-BoldOblique", 718, -207, (-174, -228, 1114, 962), 96, "NimbusSans-BoldItalic"),
    ("Courier", 629, -157, (-23, -250, 715, 805), 35, "NimbusMonoPS-Regular"),
    ("Courier-Bold", 629, -157, (-113, -250, 749, 801), 35, "NimbusMonoPS-Bold"),
    ("Courier-Oblique", 629, -157, (-27, -250, 849, 805), 99, "NimbusMonoPS-Italic"),
    ("Courier-BoldOblique", 629, -157, (-57, -250, 869, 801), 99, "NimbusMonoPS-BoldItalic"),
    ("Symbol", 1010, -293, (-180, -293, 1090, 1010), 4, "StandardSymbolsPS"),
    ("ZapfDingbats", 820, -143, (-1, -143, 981, 820), 4, "D050000L"),
]

# Names of the resource file's dictionary F, in its (sorted) order.
RESOURCE_ORDER = sorted(f[0] for f in FONTS)


def default_encoding_key(name):
    return name if name in ("Symbol", "ZapfDingbats") else "Standard"

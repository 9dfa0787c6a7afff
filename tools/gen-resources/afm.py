"""A reader of the few AFM keys the generator needs."""


class Afm:
    def __init__(self, text):
        self.header = {}
        self.chars = []          # (code, width, name) in file order; code -1 is unencoded
        in_metrics = False
        for line in text.splitlines():
            line = line.strip()
            if line.startswith("StartCharMetrics"):
                in_metrics = True
                continue
            if line.startswith("EndCharMetrics"):
                in_metrics = False
                continue
            if in_metrics:
                if not line.startswith("C "):
                    continue
                fields = {}
                for part in line.split(";"):
                    words = part.split()
                    if words:
                        fields[words[0]] = words[1:]
                self.chars.append((int(fields["C"][0]), float(fields["WX"][0]),
                                   fields["N"][0]))
            elif line and not line.startswith("Comment"):
                key, _, value = line.partition(" ")
                self.header.setdefault(key, value.strip())

    def number(self, key, default=0.0):
        value = self.header.get(key)
        return float(value) if value not in (None, "") else default

    def widths(self):
        return {name: width for _, width, name in self.chars}

    def encoding(self):
        """The built-in encoding: 256 names or None."""
        table = [None] * 256
        for code, _, name in self.chars:
            if 0 <= code < 256:
                table[code] = name
        return table

"""Pretty-printers for Postrider's classes: (gdb) source postrider_gdb.py

Nothing in the debugged program is trusted: lengths are cut at their fields, at "print elements" and
at kMaxText, and what cannot be read is said in the value's place.
"""

import datetime

import gdb
import gdb.printing
import gdb.types

kMaxText = 4096
kMaxObjects = 65536
kNoDrive = 0xFFFF
kBrokenIndex = 0xFFFF
kFirstPrintable = 0x20
kOwnsObjects = 0x1
kStatusBits = (
    (0x01, "processed"),
    (0x02, "return receipt"),
    (0x20, "keep message id"),
    (0x40, "install request"),
)


class Encoding(gdb.Parameter):
    """The code page of the debugged program's texts, by its Python name (cp1252, cp932)."""

    set_doc = "Set the code page of Postrider's texts."
    show_doc = "Show the code page of Postrider's texts."

    def __init__(self):
        super().__init__("postrider-encoding", gdb.COMMAND_DATA, gdb.PARAM_STRING)
        self.value = self.known = "cp1252"

    def get_set_string(self):
        try:
            if b"a".decode(self.value) != "a":
                raise LookupError
        except (LookupError, ValueError):
            wrong, self.value = self.value, self.known
            return "There is no code page %s." % wrong
        self.known = self.value
        return ""

    def get_show_string(self, value):
        return "The code page of Postrider's texts is %s." % value


encoding = Encoding()


def decode(data, escaped=""):
    """The text of `data`, with a backslash before what is in `escaped` and octal escapes for what
    cannot be shown."""
    # gdb takes the text in the target's character set and shows it in the host's.
    shown = gdb.host_charset()
    if shown.lower() != gdb.target_charset().lower():
        shown = "ascii"
    text = []
    for char in data.decode(encoding.known, "surrogateescape"):
        try:
            if char.isprintable() and char.encode(shown):
                text.append("\\" + char if char in escaped else char)
                continue
        except (UnicodeError, LookupError):
            pass
        raw = char.encode(encoding.known, "surrogateescape")
        text.extend("\\%03o" % byte for byte in raw)
    return "".join(text)


def quote(data, more=False):
    return '"%s"%s' % (decode(data, '\\"'), "..." if more else "")


def limit():
    """How many characters of a text to show."""
    elements = gdb.parameter("print elements")
    return min(elements or kMaxText, kMaxText)


def read(address, size):
    return bytes(gdb.selected_inferior().read_memory(address, size)) if size else b""


def unreadable(what, address):
    return "<%s at 0x%x cannot be read>" % (what, address)


def behind(pointer):
    """The value behind a pointer, or None when its memory cannot be read."""
    # A copy of its bytes: a value in its place would have gdb look up its dynamic type, and warn
    # of every class of a library without symbols.
    kind = pointer.type.strip_typedefs().target()
    try:
        return gdb.Value(read(int(pointer), kind.sizeof), kind)
    except (gdb.error, OverflowError):
        return None


def string_data(string, most):
    """The first `most` bytes of a BaseString's text, and whether there are more; or the complaint
    instead of both."""
    if int(string["mpRep"]) == 0:
        return None, "<no text>"
    rep = behind(string["mpRep"])
    if rep is None:
        return None, unreadable("text", int(string["mpRep"]))
    address, length = int(rep["mpBuffer"]), int(rep["miLength"])
    try:
        return read(address + 1, min(length, most)), length > most
    except (gdb.error, OverflowError):
        return None, unreadable("text", address)


def field_data(field):
    """The text of a length-prefixed field, cut at the field's end, and its length byte."""
    data = bytes(int(field[i]) & 0xFF for i in range(field.type.sizeof))
    return data[1 : 1 + data[0]], data[0]


def field_text(field):
    text, length = field_data(field)
    shown = quote(text[: limit()], len(text) > limit())
    return shown if length == len(text) else "%s <length byte %d>" % (shown, length)


def big_endian(value):
    """The unsigned value of an RBInt."""
    return int.from_bytes((int(value["mwBigEndian"]) & 0xFFFF).to_bytes(2, "little"), "big")


def date_text(stored):
    """The date of a record, whose bytes are big-endian: local time, from 1904."""
    seconds = int.from_bytes((int(stored) & 0xFFFFFFFF).to_bytes(4, "little"), "big")
    if seconds == 0:
        return "0"
    date = datetime.datetime(1904, 1, 1) + datetime.timedelta(seconds=seconds)
    return "%d (%s)" % (seconds, date.strftime("%Y-%m-%d %H:%M:%S"))


class View:
    """A printer that shows in the value's place why it cannot be shown."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        try:
            return self.text()
        except (gdb.error, ValueError, OverflowError) as error:
            return "<%s>" % error


class StringView(View):
    def text(self):
        data, more = string_data(self.value, limit())
        return more if data is None else quote(data, more)


class IntView(View):
    def text(self):
        value = big_endian(self.value)
        return str(value - 0x10000 if value > 0x7FFF else value)


class UserView(View):
    def text(self):
        name = field_text(self.value["name"])
        address, length = field_data(self.value["zone"])
        return "%s <%s>" % (name, decode(address)) if length else name


class FileSpecView(View):
    """The path, and the fields of the classes between the value's and FileSpec."""

    def text(self):
        value = upcast(self.value, "FileSpec")
        drive = int(value["mwDrive"])
        path = ""
        if drive != kNoDrive:
            path = "%c:" % (ord("A") + drive) if drive < 26 else "<drive %d>:" % drive
        for part in ("mstrPath", "mstrName", "mstrExt"):
            data, more = string_data(value[part], limit())
            path += more if data is None else decode(data) + ("..." if more else "")
        return path or "<empty>"

    def children(self):
        return own_fields(self.value)


class RecordView(View):
    """A DiskDirRec."""

    def text(self):
        record = self.value
        if big_endian(record["index"]) == kBrokenIndex:
            return "broken record"
        first = int(record["topic"][1]) & 0xFF
        if 0 < first < kFirstPrintable:
            return "broken record"
        return "used record" if int(record["used"]) else "free slot"

    def children(self):
        try:
            return iter(self.fields())
        except gdb.error:
            return iter(())

    def fields(self):
        record = self.value
        status = int(record["status"])
        names = [name for bit, name in kStatusBits if status & bit]
        attributes = big_endian(record["attributes"])
        return [
            ("index", str(big_endian(record["index"]))),
            ("used", str(int(record["used"]))),
            ("status", "0x%02x" % status + (" (%s)" % ", ".join(names) if names else "")),
            ("topic", field_text(record["topic"])),
            ("attributes", "0x%04x" % attributes),
            ("fileName", field_text(record["fileName"])),
            ("sender", field_text(record["sender"]["name"])),
            ("date", date_text(record["date"])),
            ("count", str(big_endian(record["count"]))),
            ("kind", str(big_endian(record["kind"]))),
        ]


class DirectoryRecordView(RecordView):
    def __init__(self, value):
        super().__init__(value["moRecord"])
        self.valid = value["mfValid"]

    def text(self):
        return super().text() + ("" if int(self.valid) else ", not valid")


class ContainerView(View):
    """The objects in order."""

    def text(self):
        address = self.value["mpoList"]
        if int(address) == 0:
            return "<no list>"
        objects = behind(address)
        if objects is None:
            return unreadable("list", int(address))
        count = int(objects["mlCount"])
        owned = ", owned" if int(self.value["mFlags"]) & kOwnsObjects else ""
        return "%d object%s%s" % (count, "" if count == 1 else "s", owned)

    def display_hint(self):
        return "array"

    def children(self):
        objects = behind(self.value["mpoList"]) if int(self.value["mpoList"]) else None
        if objects is None:
            return
        kind = gdb.types.get_basic_type(self.value.type).template_argument(0).pointer()
        link, seen = objects["mpoHead"], set()
        while int(link) != 0:
            name = "[%d]" % len(seen)
            if int(link) in seen or len(seen) == kMaxObjects:
                yield name, "<the list goes round>" if int(link) in seen else "..."
                return
            node = behind(link)
            if node is None:
                yield name, unreadable("node", int(link))
                return
            seen.add(int(link))
            item = node["data"].cast(kind)
            found = behind(item)
            yield name, unreadable("object", int(item)) if found is None else found
            link = node["next"]


def bases(kind):
    return [field.type for field in kind.fields() if field.is_base_class]


def derives(kind, name):
    return kind.name == name or any(derives(base, name) for base in bases(kind))


def upcast(value, name):
    """The value as its base class of that name."""
    kind = gdb.types.get_basic_type(value.type)
    if kind.name == name:
        return value
    for base in bases(kind):
        if derives(base, name):
            return upcast(value.cast(base), name)
    raise gdb.error("no %s in %s" % (name, kind))


def own_fields(value):
    """Name and value of what the classes derived from FileSpec hold, the base's first."""
    kind = gdb.types.get_basic_type(value.type)
    if kind.name == "FileSpec":
        return
    for field in kind.fields():
        if field.is_base_class:
            if derives(field.type, "FileSpec"):
                yield from own_fields(value.cast(field.type))
        elif hasattr(field, "bitpos") and not field.artificial:
            yield field.name, value[field]


kViews = {
    "RBInt": IntView,
    "UserLRec": UserView,
    "DiskDirRec": RecordView,
    "DirectoryRecord": DirectoryRecordView,
}


def view(value):
    kind = value.type
    if kind.code in (gdb.TYPE_CODE_REF, gdb.TYPE_CODE_RVALUE_REF):
        value = value.referenced_value()
        kind = value.type
    kind = gdb.types.get_basic_type(kind)
    if kind.code != gdb.TYPE_CODE_STRUCT or kind.name is None or not kind.fields():
        return None
    if kind.name in kViews:
        return kViews[kind.name](value)
    if kind.name.startswith("RB_Container<"):
        return ContainerView(value)
    if derives(kind, "BaseString"):
        return StringView(upcast(value, "BaseString"))
    if derives(kind, "FileSpec"):
        return FileSpecView(value)
    return None


class Views(gdb.printing.PrettyPrinter):
    def __call__(self, value):
        return view(value)


gdb.printing.register_pretty_printer(None, Views("postrider"), replace=True)

"""Runs inside gdb, connected to test_debug.exe: compares what both debugger views show."""

import os
import re
import traceback
import xml.etree.ElementTree as ElementTree

import gdb
import gdb.types

kSample = (
    "{index = 7, used = 1, status = 0x03 (processed, return receipt), "
    'topic = "Minutes of Monday", attributes = 0x0400, fileName = "MSG00001.EML", '
    'sender = "Lindqvist|Maja", date = 2982848400 (1998-07-09 17:00:00), count = 16, kind = 1}'
)

kPrinted = {
    "empty": '""',
    "plain": '"Minutes of Monday"',
    "shared": '"Minutes of Monday"',
    "base": '"Minutes of Monday"',
    "letters": r'"Grüß \"to\"\011all"',
    "zero": r'"a\000b"',
    "longText": '"' + "0123456789" * 20 + '"...',
    "*noText": "<no text>",
    "*wildRep": "<text at 0x20 cannot be read>",
    "*wildText": "<text at 0x10 cannot be read>",
    "noSpec": "<empty>",
    "spec": r"C:\Mail\In Box\Letter.EML",
    "relative": r"\Box\Letter",
    "file": r"D:\Mail\DFile",
    "number": "4660",
    "negative": "-2",
    "disk": "used record = " + kSample,
    "record": "used record = " + kSample,
    "user": '"Lindqvist|Maja" <lindqvist@post>',
    "none": "0 objects",
    "texts": r'3 objects = {"Minutes of Monday", "", "Grüß \"to\"\011all"}',
    "records": "1 object, owned = {used record = " + kSample + "}",
    "*ring": '2 objects = {"Minutes of Monday", <object at 0x10 cannot be read>, '
    "<the list goes round>}",
}

kNamespace = "{http://schemas.microsoft.com/vstudio/debugger/natvis/2010}"

# What of each natvis type to look at. A type without a value here fails.
kNatvis = {
    "BaseString": "plain",
    "FileSpec": "folder",
    "RBInt": "number",
    "UserLRec": "user",
    "DiskDirRec": "disk",
    "DirectoryRecord": "record",
    "RB_Container<*>": "texts",
}


class Natvis:
    """The natvis file, with gdb to evaluate its expressions."""

    def __init__(self, path):
        root = ElementTree.parse(path).getroot()
        self.types = {kind.get("Name"): kind for kind in root.iter(kNamespace + "Type")}

    @staticmethod
    def member(expression, value):
        """The expression's value: names that are not behind a dot or an arrow are members."""
        # Without the format, whose size is an expression of its own.
        form = re.search(r",(?:\[(.*)\])?(\w*(?:\(\w+\))?)$", expression)
        if form and form.group(1):
            Natvis.member(form.group(1), value)
        gdb.set_convenience_variable("scope", value.address)
        names = r"(?<![\w.>$])(?!(?:unsigned|short|char|int)\b|\w+\s*\*\))([A-Za-z_]\w*)"
        return gdb.parse_and_eval(re.sub(names, r"$scope->\1", expression[: form.start()] if form else expression))

    def expressions(self, name, value):
        """Every expression of a type's view, with the value in whose scope it stands."""
        for element in self.types[name].iter():
            tag = element.tag.replace(kNamespace, "")
            if element.get("Condition"):
                yield element.get("Condition"), value
            if tag == "DisplayString":
                yield from ((found, value) for found in re.findall(r"\{(.*?)\}", element.text))
            elif tag in ("NextPointer", "ValueNode"):
                head = self.types[name].find(".//" + kNamespace + "HeadPointer").text
                argument = str(gdb.types.get_basic_type(value.type).template_argument(0))
                yield element.text.replace("$T1", argument), self.member(head, value).dereference()
            elif tag in ("Item", "ExpandedItem", "Size", "HeadPointer", "StringView"):
                yield element.text, value


def printed(name):
    shown = gdb.execute("print " + name, to_string=True).strip()
    return re.sub(r"^\$\d+ = (\(.*?&\) @0x[0-9a-f]+: )?", "", shown)


class Tests:
    def __init__(self):
        self.natvis = Natvis(os.environ["POSTRIDER_NATVIS"])

    def printed_values(self):
        for name, text in kPrinted.items():
            equal(name, printed(name), text)

    def printed_argument(self):
        gdb.execute("down", to_string=True)
        try:
            equal("argument", printed("argument"), kPrinted["plain"])
        finally:
            gdb.execute("up", to_string=True)

    def printed_derived_file(self):
        shown = printed("folder")
        equal("folder", shown.split(" = {")[0], r"E:\Old\DFile")
        contained("folder", shown, "mType = keDirMessages")

    def printed_damage(self):
        shown = printed("overlong")
        contained("overlong", shown, 'topic = "' + "T" * 27 + '" <length byte 200>')
        contained("overlong", shown, 'sender = "Lindqvist|Maja\\000')
        contained("overlong", shown, "<length byte 255>")
        shown = printed("broken")
        contained("broken", shown, "broken record = {index = 65535, used = 255")
        contained("freeSlot", printed("freeSlot"), "free slot = {index = 0, used = 0")
        shown = printed("*wildLength")
        contained("wildLength", shown, '"endless\\000')
        for name in ("*(RBString*)0x10", "*(FileSpec*)0x10", "*(DirectoryRecord*)0x10"):
            try:
                shown = printed(name)
            except gdb.MemoryError as error:
                shown = str(error)
            contained(name, shown, "0x1")

    def printed_garbage(self):
        """Every view over bytes of 0xFF and over text says something short."""
        for at in ("&broken", "longText.mpRep->mpBuffer"):
            for kind in ("RBString", "FileSpec", "RBInt", "DiskDirRec", "DirectoryRecord",
                         "UserLRec", "BaseDirFile", "RB_Container<DirectoryRecord>"):
                value = "*('%s'*)(%s)" % (kind, at)
                try:
                    shown = printed(value)
                except gdb.MemoryError as error:
                    # gdb itself follows a virtual base before it asks for a view.
                    raises("raw " + value, "print/r " + value, gdb.MemoryError)
                    shown = str(error)
                check("%s at %s" % (kind, at), 0 < len(shown) < 5000, shown[:200])

    def code_page(self):
        gdb.execute("set postrider-encoding cp850")
        try:
            equal("letters", printed("letters")[:6], '"Gr³▀ ')
        finally:
            gdb.execute("set postrider-encoding cp1252")
        shown = gdb.execute("set postrider-encoding nonsense", to_string=True)
        contained("nonsense", shown, "no code page")
        equal("letters", printed("letters"), kPrinted["letters"])

    def natvis_members(self):
        """Every expression finds its members in the program's debug information."""
        equal("types", sorted(self.natvis.types), sorted(kNatvis))
        for kind, name in kNatvis.items():
            count = 0
            for expression, scope in self.natvis.expressions(kind, gdb.parse_and_eval(name)):
                try:
                    self.natvis.member(expression, scope)
                except gdb.error as error:
                    check("%s: %s" % (kind, expression), False, str(error))
                count += 1
            check(kind, count > 0, "no expressions")


failures = []


def check(what, good, shown):
    if not good:
        failures.append("%s: %s" % (what, shown))


def equal(what, shown, expected):
    check(what, shown == expected, "%r instead of %r" % (shown, expected))


def contained(what, shown, expected):
    check(what, expected in shown, "%r is not in %r" % (expected, shown))


def raises(what, command, kind):
    try:
        check(what, False, gdb.execute(command, to_string=True)[:200])
    except kind:
        pass


def main():
    tests, failed = 0, 0
    gdb.execute("up", to_string=True)
    report = ElementTree.Element("testsuites")
    for name, test in vars(Tests).items():
        if name.startswith("_"):
            continue
        del failures[:]
        try:
            test(Tests())
        except Exception:
            failures.append(traceback.format_exc())
        tests += 1
        failed += bool(failures)
        case = ElementTree.SubElement(report, "testcase", name=name, classname="debug")
        for failure in failures:
            ElementTree.SubElement(case, "failure", message=failure)
            print("%s: %s" % (name, failure))
        print("%s %s" % ("FAILED" if failures else "OK    ", name))
    totals = {"tests": str(tests), "failures": str(failed), "disabled": "0", "name": "debug"}
    for key, text in totals.items():
        report.set(key, text)
    with open(os.environ["POSTRIDER_REPORT"], "w", encoding="utf-8") as file:
        file.write(ElementTree.tostring(report, encoding="unicode") + "\n")
    return 1 if failed else 0


status = main()
gdb.execute("kill")
gdb.execute("quit %d" % status)

#!/usr/bin/env python3
"""extract_test.py BIN REPORT: takes mail folders out with BIN/mailfolder.exe, and reads what comes
out with Python's own mail modules. Needs Wine and a prefix; writes a report of GoogleTest's form."""

import csv
import datetime
import email
import email.policy
import functools
import hashlib
import json
import mailbox
import os
import random
import re
import shutil
import subprocess
import sys
from concurrent.futures import ThreadPoolExecutor

sys.path.insert(0, os.path.join(os.path.dirname(__file__), "..", "support"))
import mail_files as mf
import script_tests
from mail_files import Message

BIN, REPORT = sys.argv[1:3]
DRIVE = os.path.join(os.environ["WINEPREFIX"], "drive_c")
BASE = os.path.join(DRIVE, "Extract")
TOOL = ["wine", os.path.join(BIN, "mailfolder.exe")]
FORMATS = ("mbox", "maildir", "eml")


def windows(path):
    return "C:\\" + os.path.relpath(path, DRIVE).replace("/", "\\")


def run(*arguments, code=0, zone="Europe/Berlin"):
    """Runs the tool; arguments that are paths on the drive are given as Windows has them."""
    given = [windows(a) if a.startswith(DRIVE) else a for a in arguments]
    done = subprocess.run(TOOL + given, stdin=subprocess.DEVNULL, capture_output=True, timeout=200,
                          env={**os.environ, "TZ": zone, "LC_ALL": "C.UTF-8"})
    out, err = (s.decode().replace("\r", "") for s in (done.stdout, done.stderr))
    assert code is None or done.returncode == code, (given, done.returncode, out, err)
    return out, err


def summary(out):
    return [int(n) for n in re.findall(r"\d+", out.strip().splitlines()[-1])]


def parse(data):
    return email.message_from_bytes(data, policy=email.policy.default)


def unquoted(data):
    return re.sub(rb"(?m)^>(>*From )", rb"\1", data)


def mbox_messages(path):
    """Each message's bytes and whether it is marked as read."""
    box = mailbox.mbox(path, create=False)
    return [(unquoted(box.get_bytes(key)), "R" in box[key].get_flags()) for key in box.keys()]


def read(target, form):
    """What the target holds: (bytes, seen) of each message."""
    if form == "mbox":
        return mbox_messages(target)
    if form == "maildir":
        mailbox.Maildir.colon = "!"
        box = mailbox.Maildir(target, create=False)
        return [(box.get_bytes(key), "S" in box[key].get_flags()) for key in box.keys()]
    names = sorted(n for n in os.listdir(target) if n.endswith(".eml"))
    return [(open(os.path.join(target, n), "rb").read(), None) for n in names]


def lines(data):
    """Line ends alike, and none at the end, where an mbox has to put one."""
    return re.sub(rb"\r\n?", b"\n", data).rstrip(b"\n")


def tree(folder):
    found = {}
    for where, _, names in os.walk(folder):
        for name in names:
            path = os.path.join(where, name)
            found[path] = (os.lstat(path).st_mtime_ns, open(path, "rb").read())
    return found


def test(function):
    @script_tests.test
    @functools.wraps(function)
    def work():
        folder = os.path.join(BASE, function.__name__)
        os.makedirs(folder)
        function(folder)
    return work


UMLAUTS = "Grüße aus Köln".encode("cp1252")
MULTIPART = (b"From: Bob <bob@example.org>\r\nTo: x@example.org\r\nSubject: =?utf-8?q?Gr=C3=BC?=\r\n"
             b"Date: Mon, 01 Jun 1998 10:00:00 +0200\r\nMessage-ID: <1@example.org>\r\n"
             b"MIME-Version: 1.0\r\nContent-Type: multipart/mixed; boundary=\"zz\"\r\n\r\n"
             b"--zz\r\nContent-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: 8bit\r\n"
             b"\r\nGr\xc3\xbc\xc3\x9fe\r\nFrom here\r\n--zz\r\n"
             b"Content-Type: application/octet-stream; name=a.bin\r\n"
             b"Content-Transfer-Encoding: base64\r\n\r\nAAECAw==\r\n--zz--\r\n")
NOBODY = "unknown@invalid"
# Messages, with what must be read back where it is not what the record says.
ODDITIES = [
    Message(b"Plain.\r\n", processed=True, second=b"Okafor|Chidi", second_address=b"chidi@post",
            address=b"anna@post.example"),
    Message(UMLAUTS + b"\r\n", topic=UMLAUTS, sender="Müller|Jörg".encode("cp1252"), name="Jörg Müller"),
    Message(b""), Message(b"", topic=b"", sender=b"", name=""),
    Message(b"From me\nFrom you\n>From us\n>>From all\n From\nFrom"),
    Message(b"One\rTwo\r\rFour\r"), Message(b"One\r\nTwo\nThree\rFour"),
    Message(b"x" * 5000 + b"\nshort\n" + b"=" * 200 + b" \nend \t\n"),
    Message(b"zero \0 byte " + UMLAUTS), Message(bytes(range(256)) * 4),
    Message(("y" * 996 + "äöü\n").encode("cp1252") * 2),
    Message(b"Undefined: \x81\x8d\x8f\x90\x9d.", topic=b"\x81 \x9d", subject="\ufffd \ufffd"),
    Message(b"a", topic=b"x\r\nBcc: y", subject="x  Bcc: y"), Message(b"b", topic=b"\nFrom: z",
            subject=" From: z"), Message(b"b", topic=b"nul\0\x7f\x1bz", subject="nul   z"),
    Message(b"c", topic=b"=?utf-8?q?no?="), Message(b"d", topic=b" two  blanks "),
    Message(b"e", topic=b"=1+1"), Message(b"f", topic=bytes(range(0xC0, 0xDB))),
    Message(b"g", sender=b"a\r\nBcc: b|c\0", name="c  a  Bcc: b"),
    Message(b"h", sender=b'O"Neil, Jr. \\|Tim (x) <y@z>', name='Tim (x) <y@z> O"Neil, Jr. \\'),
    Message(b"i", sender=b"|Anna", name="Anna"), Message(b"i", sender=b"Choir list", name="Choir list"),
    Message(b"j", address=b"box7", addr="box7@invalid"),
    Message(b"k", address=b"a b@c.d", addr='"a b"@c.d'), Message(b"l", address=b"x@y\r\nBcc: z", addr=NOBODY),
    Message(b"m", address=b"a" * 30 + b"@" + b"long.example." * 6 + b"org"),
    Message(b"n", address=b"C:\\users\\anna", path=True, addr=NOBODY),
    Message(b"o", identifier=b"<abc.1@host>", addr=NOBODY, id="<abc.1@host>"),
    Message(b"o", identifier=b"no id\r\nX: y", addr=NOBODY),
    Message(b"p", date=datetime.datetime(1998, 1, 9, 3, 4, 5)), Message(b"q", date=datetime.datetime(2012, 8, 1)),
    Message(b"r", date=datetime.datetime(1904, 1, 1, 0, 0, 9)), Message(b"r", kind=0, attributes=0xFFFF),
    Message(b"Note: no header\n\ntext"), Message(b"Subject: one\nno field\n"),
    Message(MULTIPART, processed=True),
    Message(MULTIPART.replace(b"\r\n", b"\r"), topic=b"Mac"),
    Message("Subject: Grüße\nFrom: Jörg <j@example.org>\n\nrohes UTF-8: ä\n".encode(), raw=True),
    Message(b"Subject: only\n this\n\nFrom the body \xfc\n", topic=b"unused"),
    Message(b"To: x@y.z\r\nX-Own: 1\r\n", topic=b"Header alone"),
    Message(b"Received: by x\nSubject: big\n\n" + b"0123456789\n" * 60000),
    Message(b"big \xe4\n" * 60000),
]


def check_message(message, data, seen, form, charset="cp1252"):
    body = data.replace(b"\r\n", b"\n")
    parsed = parse(body)
    expected = message.expected
    header = message.text.replace(b"\r\n", b"\n").replace(b"\r", b"\n")
    passed = b"\n\n" in header and re.match(rb"[!-9;-~]+: ", header) and not header.startswith(b"Note")
    passed = passed or header.startswith(b"To: x@y")
    if seen is not None:
        assert seen == message.processed
    assert parsed["X-Postrider-File"] == message.file
    assert int(parsed["X-Postrider-Kind"]) == message.kind
    if form == "eml":
        assert b"\n" not in data.replace(b"\r\n", b""), "line ends"
        assert not parse(data).defects
    else:
        assert b"\r" not in data, "line ends"
    assert not any(name.lower() in ("bcc", "x") for name in parsed.keys()), parsed.keys()
    assert max(map(len, data.splitlines())) <= 998 or passed
    if passed:
        assert lines(body).endswith(lines(message.text)), "passed through"
    if expected.get("raw"):
        return
    defects = list(parsed.defects)
    for part in parsed.walk():
        defects += part.defects
        for value in part.values():
            defects += value.defects
    assert not defects, (message.file, defects)
    if parsed.is_multipart():
        parts = list(parsed.iter_parts())
        assert parts[0].get_content().rstrip() == "Grüße\nFrom here" and parts[1].get_content() == b"\0\1\2\3", (form, [p.get_content() for p in parts])
        assert parsed["Subject"] == "Grü"
        return
    if not passed:
        assert parsed["Subject"] == expected.get("subject", message.topic.decode(charset, "replace"))
        sender = parsed["From"].addresses[0]
        family, bar, given = message.sender.decode(charset).partition("|")
        name = expected.get("name", f"{given} {family}" if bar else family)
        # Python takes a run of blanks in a name for one.
        assert sender.display_name.split() == name.split(), (message.file, sender.display_name, name)
        assert sender.addr_spec == expected.get("addr", message.address.decode() or NOBODY)
        assert message.file in ("MSG00001.EML",) or parsed["To"] is None
        local = message.date.replace(tzinfo=datetime.timezone(parsed["Date"].datetime.utcoffset()))
        assert parsed["Date"].datetime == local
        if message.date.year > 1980:
            assert local.utcoffset() == datetime.timedelta(hours=2 if message.date.month == 7 or
                                                           message.date.month == 8 else 1)
        assert re.fullmatch(r"<[^<>@\s]+@[^<>@\s]+>", parsed["Message-ID"])
        assert parsed["Message-ID"] == expected.get("id", parsed["Message-ID"])
        text = parsed.get_payload(decode=True)
        assert lines(text) == lines(message.text), (message.file, text[:200])
    elif b"unused" == message.topic:
        assert parsed["Subject"] == "only this" and parsed.get_content() == "From the body ü\n"
    else:
        assert parsed["From"].addresses[0].display_name == "Anna Smith"


@test
def every_message_is_read_back_by_other_programs(folder):
    source = os.path.join(folder, "In")
    mf.make(source, ODDITIES)
    before = tree(source)
    for form in FORMATS:
        target = os.path.join(folder, form)
        out, err = run("extract", source, target, "--format", form)
        assert summary(out) == [len(ODDITIES), 0, 0, 0], out
        assert "bytes have no meaning in windows-1252" in err
        found = {parse(data)["X-Postrider-File"]: (data, seen) for data, seen in read(target, form)}
        assert len(read(target, form)) == len(found) == len(ODDITIES)
        for message in ODDITIES:
            check_message(message, *found[message.file], form)
        if form == "mbox":
            to = parse(found["MSG00001.EML"][0])["To"].addresses[0]
            assert (to.display_name, to.addr_spec) == ("Chidi Okafor", "chidi@post")
        # Again, and after the slots moved: nothing more.
        more = ["--append"] if form == "mbox" else []
        assert summary(run("extract", source, target, "--format", form)[0])[:2] == [0, len(ODDITIES)]
        moved = os.path.join(folder, "Moved " + form)
        shutil.copytree(source, moved)
        mf.write_d_file(moved, reversed(ODDITIES))
        new = Message(b"new", topic=b"new")
        new.file = "NEW.EML"
        with open(os.path.join(moved, new.file), "wb") as file:
            file.write(new.record() + new.text)
        assert summary(run("extract", moved, target, "--format", form, *more)[0])[:2] == [1, len(ODDITIES)]
        assert len(read(target, form)) == len(ODDITIES) + 1
        assert not [n for w, _, ns in os.walk(folder) for n in ns if "mailfolder-" in n]
    assert tree(source) == before


@test
def texts_of_other_character_sets(folder):
    for charset, codec, topic in (("macintosh", "mac_roman", "Grüße ∑"), ("utf-8", "utf-8", "Zürich 日本 und so")):
        source = os.path.join(folder, charset)
        message = Message("Ähm ÿ\r".encode(codec), topic=topic.encode(codec)[:27],
                          sender="Müller|Jörg 日本日本日本日".encode(codec, "ignore")[:31])
        mf.make(source, [message])
        target = os.path.join(folder, charset + ".mbox")
        _, err = run("extract", source, target, "--charset", charset)
        parsed = parse(mbox_messages(target)[0][0])
        assert parsed["Subject"] == topic and parsed.get_content() == "Ähm ÿ\n" and not err
        name = message.sender.decode(codec, "ignore")
        shown = parsed["From"].addresses[0].display_name
        assert shown.split() == f"{name[7:]} Müller".split(), (shown, name)


@test
def a_zone_has_its_rule_for_the_day(folder):
    source = os.path.join(folder, "In")
    mf.make(source, [Message(b"", date=datetime.datetime(1999, 1, 1)), Message(b"", date=datetime.datetime(1999, 7, 1))])
    for zone, offsets in (("America/New_York", (-5, -4)), ("Asia/Kolkata", (5.5, 5.5)), ("UTC", (0, 0))):
        target = os.path.join(folder, zone.replace("/", " ") + ".mbox")
        run("extract", source, target, zone=zone)
        found = [parse(d)["Date"].datetime.utcoffset() for d, _ in mbox_messages(target)]
        assert found == [datetime.timedelta(hours=h) for h in offsets], (zone, found)


@test
def nothing_is_written_where_it_must_not(folder):
    mail = os.path.join(folder, "Mail")
    names = ["In Box", "NUL", "trailing dot.x", "Work"]
    for name in names:
        mf.make(os.path.join(mail, name), [Message(name.encode(), topic=topic) for topic in
                (b"..\\..\\escape", b"C:\\x", b"a/b:c*?.", b"CON", b"", b" . ", b"same", b"SAME")])
    mf.make(os.path.join(mail, "Work", "1998"), [Message(b"deep")])
    secret = os.path.join(folder, "secret.EML")
    with open(secret, "wb") as file:
        file.write(bytes(mf.SLOT) + b"not in the folder")
    os.symlink(secret, os.path.join(mail, "Work", "LINK.EML"))
    os.symlink(folder, os.path.join(mail, "loop"))
    outside = [Message(b"x"), Message(b"y")]
    mf.make(os.path.join(mail, "Names"), outside)
    outside[0].file, outside[1].file = "..\\secret.EML", "C:secret.EML"
    mf.write_d_file(os.path.join(mail, "Names"), outside)
    before = tree(folder)
    for form in FORMATS:
        target = os.path.join(folder, "out " + form)
        out, err = run("extract", mail, target, "--recursive", "--format", form, code=3)
        assert summary(out) == [35, 0, 0, 3], out
        assert err.count("no file of the folder can have that name") == 2
        assert err.count("it is a link out of the folder") == 1
        made = sorted(p for p in tree(folder) if p not in before and not p.startswith(target + "/"))
        assert not made, made
        for path in tree(target):
            for part in os.path.relpath(path, target).split("/"):
                assert re.fullmatch(r"[A-Za-z0-9 ._()!,-]+", part) and part[-1] not in " .", part
                assert part.split(".")[0].upper() not in ("CON", "NUL"), part
        assert not any(b"not in the folder" in data for _, data in tree(target).values())
        where = {"mbox": "Work/1998.mbox", "maildir": "Work/1998/new", "eml": "Work/1998/00001 A topic.eml"}
        assert os.path.exists(os.path.join(target, where[form]))
        shutil.rmtree(target)
    work = os.path.join(mail, "Work")
    os.symlink(work, os.path.join(folder, "way in"))
    run("extract", work, os.path.join(work, "new.mbox"), code=2)
    run("extract", work, os.path.join(folder, "way in", "sub"), "--format", "eml", code=2)
    run("extract", work, os.path.join(mail, "In Box"), "--format", "eml", code=1)
    new = os.path.join(folder, "new.mbox")
    for wrong in ([new, "--manifest", os.path.join(work, "m.csv")], [new, "--manifest", new], ["NUL"],
                  [os.path.join(folder, "COM1")]):
        run("extract", work, *wrong, code=2)
    assert "it is a file" in run("extract", work, secret, "--format", "eml", code=1)[1]
    foreign = os.path.join(folder, "letter.txt")
    with open(foreign, "wb") as file:
        file.write(b"Dear all,\n")
    run("extract", work, foreign, "--append", code=1)
    for wrong in foreign, secret:
        assert "it looks like" in run("extract", wrong, os.path.join(folder, "new.mbox"), code=1)[1]
    box, link = os.path.join(folder, "box"), os.path.join(folder, "link")
    run("extract", os.path.join(mail, "In Box"), box)
    os.symlink(box, link)
    os.chmod(box, 0o444)
    for kept in box, link:
        run("extract", work, kept, "--append", code=1)
    others = os.path.join(folder, "eml", "my.mailfolder-new"), new + ".mailfolder-new"
    os.makedirs(os.path.dirname(others[0]))
    for name in others:
        with open(name, "wb") as file:
            file.write(b"my own file")
    run("extract", work, os.path.dirname(others[0]), "--format", "eml", code=3)
    run("extract", work, new, code=1)
    assert all(open(name, "rb").read() == b"my own file" for name in others)
    os.makedirs(os.path.join(folder, "m.csv.mailfolder-new"))
    run("extract", work, box, "--manifest", os.path.join(folder, "m.csv"), code=1)
    os.makedirs(os.path.join(folder, "linked"))
    os.symlink(mail, os.path.join(folder, "linked", "Work"))
    run("extract", mail, os.path.join(folder, "linked"), "--recursive", "--format", "eml", code=1)
    os.remove(os.path.join(folder, "way in"))
    shutil.rmtree(os.path.join(folder, "linked"))
    after = tree(folder)
    assert all(after[path] == before[path] for path in before)


@test
def an_mbox_is_added_to_when_told(folder):
    source, box = os.path.join(folder, "In"), os.path.join(folder, "all.mbox")
    mf.make(source, [Message(b"one"), Message(b"two")])
    old = b"From a@b Thu Jan  1 00:00:00 1970\nSubject: mine\n\nno empty line behind me"
    with open(box, "wb") as file:
        file.write(old)
    run("extract", source, box, code=1)
    assert open(box, "rb").read() == old
    assert summary(run("extract", source, box, "--append")[0])[0] == 2
    assert open(box, "rb").read().startswith(old) and len(mbox_messages(box)) == 3
    # What an ended program left between its two renames, and behind them.
    whole = open(box, "rb").read()
    os.rename(box, box + ".mailfolder-old")
    assert summary(run("extract", source, box)[0])[:2] == [0, 2]
    with open(box + ".mailfolder-old", "wb") as file:
        file.write(old)
    run("extract", source, box)
    assert open(box, "rb").read() == whole and os.listdir(folder) == ["In", "all.mbox"] or \
        sorted(os.listdir(folder)) == ["In", "all.mbox"]


@test
def messages_that_only_the_d_file_tells_apart_all_come_out(folder):
    target = os.path.join(folder, "all")
    for number, topic in enumerate((b"Invoice", b"Wedding")):
        source = os.path.join(folder, f"F{number}")
        mf.make(source, [Message(b"text", topic=topic)])
        with open(os.path.join(source, "MSG00001.EML"), "wb") as file:
            file.write(bytes(mf.SLOT) + b"text")
        for form in FORMATS:
            options = ["--format", form] + ["--append"] * (form == "mbox")
            assert summary(run("extract", source, target + form, *options)[0])[:2] == [1, 0]
            assert summary(run("extract", source, target + form, *options)[0])[:2] == [0, 1]


@test
def what_has_no_record_before_its_text_is_taken_whole(folder):
    source, box = os.path.join(folder, "In"), os.path.join(folder, "in.mbox")
    mf.make(source, [Message(b"sound")])
    texts = {"LONG.EML": b"a line of text\n" * 40, "MAIL.EML": b"From: a@b\nSubject: saved by another\n\nshort\n",
             "NONE.EML": b"", "SHORT.EML": b"\0\1\2", "._MSG00001.EML": b"\0\5\x16\7" + bytes(400)}
    for name, text in texts.items():
        with open(os.path.join(source, name), "wb") as file:
            file.write(text)
    out, err = run("extract", source, box, code=3)
    assert summary(out) == [3, 0, 0, 2] and err.count("no record, and is taken whole") == 2, (out, err)
    taken = [data for data, _ in mbox_messages(box)]
    assert any(texts["LONG.EML"].strip() in data for data in taken)
    assert ("saved by another", "short\n") in [(m["subject"], m.get_content()) for m in map(parse, taken)]


@test
def several_at_once_take_each_message_once(folder):
    source, target = os.path.join(folder, "In"), os.path.join(folder, "out")
    mf.make(source, [Message(b"%d" % n) for n in range(300)])
    os.mkdir(target)
    os.mkfifo(os.path.join(target, "pipe.eml"))  # no message, and nothing that can be read
    with ThreadPoolExecutor(3) as pool:
        said = list(pool.map(lambda _: run("extract", source, target, "--format", "eml", code=None), range(3)))
    os.remove(os.path.join(target, "pipe.eml"))
    assert len(read(target, "eml")) == 300, said
    assert all("taken" in out or "another program is writing it" in err for out, err in said), said


@test
def a_held_d_file_is_waited_for_by_the_user(folder):
    source, box, deleted = os.path.join(folder, "In"), os.path.join(folder, "in.mbox"), Message(b"deleted")
    mf.make(source, [Message(b"kept", processed=True), deleted])
    with open(os.path.join(source, "DFile"), "r+b") as file:
        file.seek(2 * mf.SLOT)
        file.write(mf.put(deleted.record(), 2, b"\0"))
    holder = subprocess.Popen(["wine", os.path.join(BIN, "helper_process.exe"), "hold",
                               windows(os.path.join(source, "DFile")), "60000", "H", "R"])
    while "holding" not in run("list", source, code=None)[1]:
        assert holder.poll() is None
    said = run("extract", source, box, code=1)
    holder.kill()
    holder.wait()
    assert "Try again" in said[1] and not os.path.exists(box), said
    assert summary(run("extract", source, box)[0])[0] == 1


def day(number):
    return datetime.datetime(1998, 1, 1, 23, 59, 59) + datetime.timedelta(days=number)


@test
def selections_and_manifest_tell_the_same_messages(folder):
    source = os.path.join(folder, "In")
    messages = [Message(b"text %d" % n, topic=(b"Topic %d" % n, "Grüße".encode("cp1252"), b"=SUM(1)")[n % 3],
                        sender=(b"Smith|Anna", b"Okafor|Chidi")[n % 2], address=b"p%d@post" % (n % 5),
                        date=day(n), kind=n % 6, processed=n % 4 == 0) for n in range(30)]
    mf.make(source, messages)
    choices = [
        (["--unprocessed"], lambda m: not m.processed),
        (["--since", "1998-01-10"], lambda m: m.date.day >= 10),
        (["--until", "1998-01-10"], lambda m: m.date.day <= 10),
        (["--from", "CHIDI"], lambda m: b"Chidi" in m.sender),
        (["--from", "P3@"], lambda m: m.address.startswith(b"p3")),
        (["--subject", "grÜßE"], lambda m: m.topic[:1] == b"G"),
        (["--kind", "4"], lambda m: m.kind == 4),
        (["--kind", "1", "--since", "1998-01-05", "--unprocessed"],
         lambda m: m.kind == 1 and m.date.day >= 5 and not m.processed)]
    for number, (options, wanted) in enumerate(choices):
        manifest = os.path.join(folder, f"{number}.csv")
        out, _ = run("extract", source, os.path.join(folder, f"{number}\u202e.mbox"), "--manifest", manifest, *options)
        expected = [m for m in messages if wanted(m)]
        assert summary(out)[0] == len(expected), (options, out)
        with open(manifest, newline="", encoding="utf-8") as file:
            rows = list(csv.DictReader(file))
        assert [r["file"] for r in rows] == [m.file for m in expected], options
        for row, message in zip(rows, expected):
            assert row["sha256"] == hashlib.sha256(message.text).hexdigest()
            assert row["subject"].lstrip("'") == message.topic.decode("cp1252")
            assert row["date"] == str(message.date) and int(row["kind"]) == message.kind
            assert row["marks"] == ("processed" if message.processed else "")
            assert int(row["slot"]) == messages.index(message) + 1 and row["target"].endswith(f"{number}\u202e.mbox")
        assert not any(r["subject"].startswith("=") for r in rows)
        # A list tells the same ones.
        listed = [json.loads(line) for line in run("list", source, "--format", "jsonl", *options)[0].splitlines()]
        assert [m["file"] for m in listed] == [m.file for m in expected], options
        table = run("list", source, "--format", "csv", "--sort", "subject", *options)[0]
        assert [r["file"] for r in csv.DictReader(table.splitlines())] == \
            [m.file for m in sorted(expected, key=lambda m: m.topic.decode("cp1252").upper())], options
    for wrong in (["--since", "1998-02-30"], ["--until", "tomorrow"], ["--kind", "9"], ["--format", "pdf"]):
        run("extract", source, os.path.join(folder, "x"), *wrong, code=2)


def damage(seed, folder, messages):
    """One kind of damage to a folder of whole messages."""
    random_ = random.Random(seed)
    path = os.path.join(folder, "DFile")
    with open(path, "rb") as file:
        data = bytearray(file.read())
    place = random_.randrange(len(data))
    slot = random_.randrange(1, len(messages) + 1) * mf.SLOT
    noise = random_.randbytes(mf.SLOT)
    victim = random_.choice(messages)
    own = bytearray(victim.record())
    kind = seed % 20
    if kind == 0:
        os.remove(path)
        return
    if kind == 1:
        data[slot:slot + 2] = b"\xff\xff"
    elif kind == 2:
        data[slot + mf.TOPIC + 1] = random_.randrange(1, 32)
    elif kind == 3:
        data[slot + random_.choice((mf.TOPIC, mf.FILE, mf.SENDER, mf.SECOND))] = random_.randrange(34, 256)
    elif kind == 4:
        del data[place:]
    elif kind == 5:
        data[slot:slot + mf.SLOT] = noise
    elif kind == 6:
        data[slot:slot + mf.SLOT] = bytes(mf.SLOT)
    elif kind == 7:
        data[slot + 2] = 0
    elif kind == 8:
        data = bytearray(noise * 9)[:random_.randrange(3000)]
    elif kind == 9:
        data[:mf.SLOT] = noise
    elif kind == 10:
        data = data[mf.SLOT:] + noise[:place % mf.SLOT]
    elif kind == 11:
        data[slot:slot + mf.SLOT] = data[mf.SLOT:2 * mf.SLOT]
    elif kind == 12:
        name = random_.choice((b"..\\DFILE", b"NUL", b"*.EML", b"DFile", b"", b"\0\0", b"MSG00001.EML."))
        data[slot + mf.FILE:slot + mf.FILE + 34] = mf.pascal(name, 34)
    elif kind == 13:
        for _ in range(random_.randrange(1, 60)):
            data[random_.randrange(len(data))] = random_.randrange(256)
    elif kind == 14:
        del data[place:place + random_.randrange(1, mf.SLOT)]
    elif kind in (15, 16, 17):
        # The message file's own record: with nothing, noise, or one that is no record of it.
        own = bytearray(bytes(mf.SLOT) if kind == 15 else noise if kind == 16 else
                        random_.choice(messages).record())
        data[slot + random_.randrange(mf.SLOT)] ^= 1 << random_.randrange(8)
    elif kind == 18:
        with open(os.path.join(folder, "SHORT.EML"), "wb") as file:
            file.write(noise[:random_.randrange(mf.SLOT)])
    else:
        os.rename(os.path.join(folder, victim.file), os.path.join(folder, "LOST.EML"))
        victim.file = "LOST.EML"
    with open(path, "wb") as file:
        file.write(data)
    with open(os.path.join(folder, victim.file), "wb") as file:
        file.write(bytes(own) + victim.text)


@test
def of_two_hundred_kinds_of_damage_none_loses_a_message(folder):
    mail = os.path.join(folder, "Mail")
    texts = {}
    for seed in range(200):
        name = f"F{seed:03}"
        messages = [Message(b"%s message %d says this\r\n" % (name.encode(), n), topic=b"Topic %d" % n,
                            date=day(n)) for n in range(5)]
        mf.make(os.path.join(mail, name), messages)
        damage(seed, os.path.join(mail, name), messages)
        texts[name] = sorted(m.text.strip() for m in messages)
    before = tree(mail)
    for form in FORMATS:
        target = os.path.join(folder, form)
        for _ in range(2):
            out, err = run("extract", mail, target, "--recursive", "--deleted", "--format", form, code=3)
        assert "Cannot" not in err
        for name, expected in texts.items():
            place = os.path.join(target, name + (".mbox" if form == "mbox" else ""))
            found = sorted(data.replace(b"\r", b"").split(b"\n\n", 1)[1].strip() for data, _ in read(place, form))
            assert found == expected, (form, name, found, expected)
        assert summary(out)[:2] == [0, 1000], out
    assert tree(mail) == before


def whole_texts(target, form):
    """The texts of what a reader sees of the target, each of which must be whole."""
    if not os.path.exists(target) or form == "maildir" and not os.path.exists(os.path.join(target, "cur")):
        return []
    return [lines(data.replace(b"\r", b"").split(b"\n\n", 1)[1]) for data, _ in read(target, form)]


@test
def each_message_is_there_once_wherever_the_first_run_was_ended(folder):
    source = os.path.join(folder, "In")
    messages = [Message(b"%d begins\n" % n + b"a line of many\n" * 300 + b"%d ends\n" % n) for n in range(3)]
    mf.make(source, messages)
    expected = sorted(lines(m.text) for m in messages)
    ended_tool, ended = TOOL[1].replace(".exe", "_ended.exe"), 98

    def end_everywhere(form):
        code, step = ended, 0
        while code == ended:
            step += 1
            target = os.path.join(folder, f"{form} {step}")
            arguments = ["extract", windows(source), windows(target), "--format", form]
            arguments += ["--append"] if form == "mbox" else []
            code = subprocess.run(["wine", ended_tool, *arguments], stdin=subprocess.DEVNULL, capture_output=True,
                                  env={**os.environ, "POSTRIDER_END_AT": str(step)}).returncode
            assert code in (0, ended), code
            texts = whole_texts(target, form)
            assert len(texts) == len(set(texts)) and set(texts) <= set(expected), (form, step)
            run(*arguments)
            assert sorted(whole_texts(target, form)) == expected, (form, step)
            left = [n for _, _, names in os.walk(target) for n in names if "mailfolder-" in n]
            assert not left, left
        return step

    with ThreadPoolExecutor(2) as pool:
        steps = list(pool.map(end_everywhere, FORMATS))
    print(f"  steps: {dict(zip(FORMATS, steps))}")
    assert min(steps) > 5, steps


@test
def one_message_is_shown(folder):
    source = os.path.join(folder, "In")
    mf.make(source, [Message("Grüße\r\x1b[31m\tred".encode("cp1252"), address=b"anna@post", processed=True),
                     Message(MULTIPART)])
    out, _ = run("show", source, "1")
    assert out == ("From        Anna Smith <anna@post>\nTopic       A topic\nDate        1998-07-09 17:00:01\n"
                   "Kind        1\nMarks       processed\nFile        MSG00001.EML\nSlot        1\n\n"
                   "Grüße\n·[31m\tred\n"), out
    shown, _ = run("show", source, "msg00002.eml")
    assert shown.split("\n\n", 1)[1].startswith("From: Bob <bob@example.org>\nTo: x@example.org\nSubject: Grü\n")
    assert shown.endswith("\n\nGrüße\nFrom here\n[a.bin, application/octet-stream, 4 bytes]\n"), shown
    raw = subprocess.run(TOOL + ["show", windows(source), "msg00002.eml", "--raw"], capture_output=True)
    assert raw.stdout == MULTIPART
    run("show", source, "3", code=1)


@test
def manual_and_completions_are_what_the_commands_are(folder):
    project = os.path.join(os.path.dirname(__file__), "../..")
    made = os.path.join(folder, "made")
    subprocess.run([os.path.join(project, "tools/command_documents"), TOOL[1], made], check=True)
    for path in tree(made):
        name = os.path.relpath(path, made)
        same = open(path, "rb").read() == open(os.path.join(project, name), "rb").read()
        assert same, f"{name} is out of date: run tools/command_documents {TOOL[1]}"
    page = open(os.path.join(made, "docs/mailfolder.1")).read()
    assert re.search(r"(?m)^\.SS extract", page) and r"\-\-flag\-separator" in page
    script = """. completions/mailfolder.bash; complete_() { COMP_WORDS=("$@") COMP_CWORD=$(($# - 1)) COMPREPLY=()
        _mailfolder; echo "${COMPREPLY[*]}"; }
        complete_ mailfolder ext; complete_ mailfolder extract a --format ''; complete_ mailfolder prefs s
        complete_ mailfolder extract --rec"""
    said = subprocess.run(["bash", "-c", script], cwd=made, capture_output=True, text=True, check=True)
    assert said.stdout.split("\n")[:4] == ["extract", "mbox maildir eml", "show", "--recursive"], said


sys.exit(script_tests.run_all(BASE, REPORT, sys.argv[3:]))

"""Mail folders as the mail client leaves them: docs/formats/ in a few lines."""

import datetime
import os
import pathlib
import struct

SLOT = 316
HEADER = bytes(SLOT)
EPOCH = datetime.datetime(1904, 1, 1)
DATE = 2082844800 + 981173106  # 2001-02-03 04:05:06
# Offsets of a record's fields; a user's fields are behind SENDER and SECOND.
TOPIC, FILE, SENDER, ID, SECOND = 4, 38, 72, 112, 186
ADDRESS, TYPE = 46, 78


def pascal(text, size):
    """A field of that size; what it has no room for is cut."""
    text = (text.encode("cp1252") if isinstance(text, str) else text)[:size - 1]
    return (bytes([len(text)]) + text).ljust(size, b"\0")


def put(data, offset, new):
    """The bytes with some of them replaced."""
    return data[:offset] + new + data[offset + len(new):]


def user(name, address, size=114):
    """A stored user record."""
    return (pascal(name, 32) + b"\xff\x01\x01\x06\0" + bytes(9) + pascal(address, 32)
            + b"\0\x80").ljust(size, b"\0")


def record(topic, name, sender="Smith|Anna", date=DATE, status=0, attributes=0, kind=1, used=1):
    """A record, which names the message file `name`."""
    return (b"\0\0" + bytes([used, status]) + pascal(topic, 28) + bytes(4)
            + struct.pack(">H", attributes) + pascal(name, 34)
            + pascal(sender, 32).ljust(114, b"\0") + bytes(114)
            + struct.pack(">L4xHH4x", date, 0, kind))


def slots(data):
    return [data[i:i + SLOT] for i in range(0, len(data) - len(data) % SLOT, SLOT)]


def file_name(slot):
    return slot[39:39 + min(slot[38], 33)].decode("cp1252")


class Folder:
    """A type 0 folder of sound messages, each with its file."""

    def __init__(self, path, topics=("Hello", "Good bye", "Minutes")):
        self.path = pathlib.Path(path)
        self.path.mkdir(parents=True)
        self.names = [f"MSG{i:05}.EML" for i in range(len(topics))]
        self.records = [record(topic, name, date=DATE + i, status=i % 2)
                        for i, (topic, name) in enumerate(zip(topics, self.names))]
        for name, stored in zip(self.names, self.records):
            (self / name).write_bytes(self.own(stored))
        self.write(*self.records)

    def __truediv__(self, name):
        return self.path / name

    @staticmethod
    def own(stored):
        """What a message file begins with, and a text."""
        return put(stored, 3, b"\0") + b"A text.\r\n"

    def write(self, *records):
        (self / "DFile").write_bytes(HEADER + b"".join(records))

    def read(self):
        return (self / "DFile").read_bytes()

    def bytes(self):
        """Everything below, by its name."""
        return {str(file.relative_to(self.path)): file.read_bytes()
                for file in self.path.rglob("*") if file.is_file()}


class Message:
    """One message: what its record says, and its text. Texts are bytes."""

    def __init__(self, text=b"", topic=b"A topic", sender=b"Smith|Anna", address=b"", second=b"",
                 second_address=b"", date=datetime.datetime(1998, 7, 9, 17, 0, 1), kind=1,
                 processed=False, identifier=b"", path=False, attributes=0, **expected):
        self.__dict__.update(locals())
        self.expected = expected
        self.file = None

    def record(self):
        stored = record(self.topic, self.file, self.sender, status=self.processed,
                        date=int((self.date - EPOCH).total_seconds()), attributes=self.attributes, kind=self.kind)
        rest = self.address[31:]
        for offset, data in ((SENDER + ADDRESS, pascal(self.address, 32)),
                             (SENDER + TYPE, struct.pack("<H", 0x2000 if self.path else 0x8000)),
                             (SECOND, b"\x01+" + pascal(rest, 112) if rest else pascal(self.second, 32)),
                             (SECOND + ADDRESS, b"" if rest else pascal(self.second_address, 32)),
                             (ID, pascal(self.identifier, 74) if self.identifier else b"")):
            stored = put(stored, offset, data)
        return stored


def make(folder, messages):
    """Writes message files and a D file."""
    os.makedirs(folder)
    for number, message in enumerate(messages, 1):
        message.file = message.file or f"MSG{number:05}.EML"
        pathlib.Path(folder, message.file).write_bytes(message.record() + message.text)
    write_d_file(folder, messages)


def write_d_file(folder, messages):
    pathlib.Path(folder, "DFile").write_bytes(HEADER + b"".join(m.record() for m in messages))

"""The bytes of mail folders, as tests make and read them."""

import pathlib
import struct

SLOT = 316
HEADER = bytes(SLOT)
DATE = 2082844800 + 981173106  # 2001-02-03 04:05:06


def pascal(text, size):
    text = text.encode("cp1252") if isinstance(text, str) else text
    return (bytes([len(text)]) + text).ljust(size, b"\0")


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


def put(data, offset, new):
    """The bytes with some of them replaced."""
    return data[:offset] + new + data[offset + len(new):]


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

"""Mail folders as the mail client leaves them: docs/formats/ in a few lines."""

import datetime
import os
import struct

RECORD = 316
EPOCH = datetime.datetime(1904, 1, 1)
# Offsets of a record's fields; a user's fields are behind SENDER and SECOND.
INDEX, USED, STATUS, TOPIC, ATTRIBUTES, FILE, SENDER, ID, SECOND, DATE, COUNT, KIND = (
    0, 2, 3, 4, 36, 38, 72, 112, 186, 300, 308, 310)
NAME, ADDRESS, TYPE = 0, 46, 78


def put(record, offset, data):
    record[offset:offset + len(data)] = data


def pascal(text, size):
    text = text[:size - 1]
    return bytes([len(text)]) + text


class Message:
    """One message: what its record says, and its text. Texts are bytes."""

    def __init__(self, text=b"", topic=b"A topic", sender=b"Smith|Anna", address=b"", second=b"",
                 second_address=b"", date=datetime.datetime(1998, 7, 9, 17, 0, 1), kind=1,
                 processed=False, identifier=b"", path=False, attributes=0, **expected):
        self.__dict__.update(locals())
        self.expected = expected
        self.file = None

    def record(self, used=1):
        record = bytearray(RECORD)
        record[USED] = used
        record[STATUS] = 1 if self.processed else 0
        put(record, TOPIC, pascal(self.topic, 28))
        put(record, ATTRIBUTES, struct.pack(">H", self.attributes))
        put(record, FILE, pascal(self.file.encode("cp1252"), 34))
        put(record, SENDER, pascal(self.sender, 32))
        put(record, SENDER + ADDRESS, pascal(self.address, 32))
        put(record, SENDER + TYPE, struct.pack("<H", 0x2000 if self.path else 0x8000))
        put(record, SECOND, pascal(self.second, 32))
        put(record, SECOND + ADDRESS, pascal(self.second_address, 32))
        if len(self.address) > 31:
            put(record, SECOND, b"\x01+" + pascal(self.address[31:], 112))
        if self.identifier:
            put(record, ID, pascal(self.identifier, 74))
        put(record, DATE, struct.pack(">I", int((self.date - EPOCH).total_seconds())
                                      if self.date else 0))
        put(record, KIND, struct.pack(">H", self.kind))
        return bytes(record)

    def write(self, folder):
        with open(os.path.join(folder, self.file), "wb") as file:
            file.write(self.record() + self.text)


def make(folder, messages, header=True):
    """Writes message files and a D file, and returns the records."""
    os.makedirs(folder)
    for number, message in enumerate(messages, 1):
        message.file = message.file or f"MSG{number:05}.EML"
        message.write(folder)
    records = [message.record() for message in messages]
    write_d_file(folder, records, header)
    return records


def write_d_file(folder, records, header=True):
    with open(os.path.join(folder, "DFile"), "wb") as file:
        file.write(bytes(RECORD) * header + b"".join(records))

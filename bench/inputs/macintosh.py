"""Macintosh files: two forks, a name, a type and a creator in one file, in two formats."""
import struct
from dataclasses import dataclass

APPLE_SINGLE = struct.Struct(">II16xH")  # magic, version, number of entries (RFC 1740)
ENTRY = struct.Struct(">III")            # id, offset, length
DATA, RESOURCE, NAME, FINDER = 1, 2, 3, 9
MAC_BINARY = struct.Struct(">xB63s8s10xII37x")  # name, type and creator, lengths of the forks
BLOCK = MAC_BINARY.size


@dataclass(frozen=True)
class MacFile:
    name: bytes
    kind: bytes  # type and creator
    data: bytes
    resource: bytes

    @staticmethod
    def from_apple_single(file):
        number = APPLE_SINGLE.unpack_from(file)[2]
        entries = ENTRY.iter_unpack(file[APPLE_SINGLE.size:APPLE_SINGLE.size + number * ENTRY.size])
        found = {entry: file[offset:offset + length] for entry, offset, length in entries}
        return MacFile(found[NAME], found[FINDER][:8], found[DATA], found[RESOURCE])

    def apple_single(self):
        entries = ((DATA, self.data), (RESOURCE, self.resource), (NAME, self.name), (FINDER, self.kind + bytes(24)))
        parts = [APPLE_SINGLE.pack(0x00051600, 0x00020000, len(entries))]
        offset = APPLE_SINGLE.size + ENTRY.size * len(entries)
        for entry, content in entries:
            parts.append(ENTRY.pack(entry, offset, len(content)))
            offset += len(content)
        return b"".join(parts) + b"".join(content for _, content in entries)

    @staticmethod
    def from_mac_binary(file):
        length, name, kind, data, resource = MAC_BINARY.unpack_from(file)
        behind = BLOCK + data + -data % BLOCK
        return MacFile(name[:length], kind, file[BLOCK:BLOCK + data], file[behind:behind + resource])

    def mac_binary(self):
        head = MAC_BINARY.pack(len(self.name), self.name, self.kind, len(self.data), len(self.resource))
        return head + b"".join(fork + bytes(-len(fork) % BLOCK) for fork in (self.data, self.resource))

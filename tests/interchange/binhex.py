"""BinHex 4.0. A file here is its name, type, creator, flags, data fork and resource fork."""
import struct

from interchange.pairs import Meant, dice, pair, run, vel

APPLE_SINGLE = struct.Struct(">II16xH")  # magic, version, number of entries
ENTRY = struct.Struct(">III")  # id, offset, length
DATA, RESOURCE, NAME, FINDER = 1, 2, 3, 9
MAC_BINARY = struct.Struct(">xB63s4s4sB9xII37x")  # name's length, name, type, creator, flags, lengths of the forks
READ = r"""
    my $file = Convert::BinHex->open(FH => \*STDIN);
    $file->read_header;
    print pack "N/a* a4 a4 n (N/a*)2", $file->filename, $file->type, $file->creator, $file->flags,
        join("", $file->read_data), join("", $file->read_resource);"""
WRITE = r"""
    local $/;
    my $file = Convert::BinHex->new;
    my ($name, $type, $creator, $flags, $data, $resource) = unpack "N/a* a4 a4 n (N/a*)2", <STDIN>;
    $file->filename($name); $file->type($type); $file->creator($creator); $file->flags($flags);
    $file->data(Data => $data); $file->resource(Data => $resource);
    $file->encode(\*STDOUT);"""

banner = Meant("a BinHex text is announced as RFC 1741 has it; macutils has its own line",
               lambda text: b"(This file must be converted with BinHex 4.0)" + text[text.index(b"\n"):])
no_flags = Meant("flags do not go into BinHex", lambda file: (*file[:3], 0, *file[4:]))


def files():
    forks = [b"", b"\x90", b"\x90" * 300, b"a" * 700, b"ab\x90\x90\x90ccc", *map(dice.randbytes, (1, 127, 128, 5000))]
    for number, data in enumerate(forks):
        name = bytes(dice.choices(b"Report .(&\x8a\xff", k=number * 7 % 62 + 1))
        for resource in (b"", dice.choice(forks)):
            yield name, b"TEXT", bytes(dice.choices(range(32, 256), k=4)), number * 256, data, resource


def apple_single(name, kind, creator, flags, data, resource):
    entries = {NAME: name, FINDER: kind + creator + bytes(24), DATA: data, RESOURCE: resource}
    offset, table = APPLE_SINGLE.size + ENTRY.size * len(entries), b""
    for entry, content in entries.items():
        table += ENTRY.pack(entry, offset, len(content))
        offset += len(content)
    return APPLE_SINGLE.pack(0x00051600, 0x00020000, len(entries)) + table + b"".join(entries.values())


def from_apple_single(file):
    count = APPLE_SINGLE.unpack_from(file)[2]
    places = (ENTRY.unpack_from(file, APPLE_SINGLE.size + ENTRY.size * number) for number in range(count))
    found = {entry: file[offset : offset + length] for entry, offset, length in places}
    kind, creator, flags = struct.unpack_from(">4s4sH", found[FINDER])
    return found[NAME], kind, creator, flags, found[DATA], found[RESOURCE]


def mac_binary(name, kind, creator, flags, data, resource):
    head = MAC_BINARY.pack(len(name), name, kind, creator, flags >> 8, len(data), len(resource))
    return b"".join(part + bytes(-len(part) % 128) for part in (head, data, resource))


def from_mac_binary(file):
    length, name, kind, creator, flags, data, resource = MAC_BINARY.unpack_from(file)
    behind = 128 + (data + 127) // 128 * 128
    return name[:length], kind, creator, flags << 8, file[128 : 128 + data], file[behind : behind + resource]


def packed(name, kind, creator, flags, data, resource):
    """As the Perl programs have it."""
    return struct.pack(f">I{len(name)}s4s4sHI{len(data)}sI{len(resource)}s", len(name), name, kind, creator, flags,
                       len(data), data, len(resource), resource)


def perl(program, data):
    return run("perl", "-MConvert::BinHex", "-e", program, data=data)


@pair("BinHex, macutils", files, "binhex", "hexbin")
def macutils(file):
    written = vel("encode", "binhex", data=apple_single(*file))
    yield "read by hexbin", from_mac_binary(run("hexbin", "-s", data=written)), no_flags(file)
    text = banner(run("binhex", data=mac_binary(*file)))
    yield "read by vel", from_apple_single(vel("decode", "binhex", data=text)), file


@pair("BinHex, Perl's Convert::BinHex", files, "Convert::BinHex")
def convert_binhex(file):
    yield "read by Perl", perl(READ, vel("encode", "binhex", data=apple_single(*file))), packed(*no_flags(file))
    yield "read by vel", from_apple_single(vel("decode", "binhex", data=perl(WRITE, packed(*file)))), file

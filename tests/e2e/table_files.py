"""Makes small endgame table files: plain ones, and packed ones that store their blocks
uncompressed."""

SIZES = {"kqk": (25629, 28644), "krk": (27030, 28644)}  # entries by side to move
BLOCK = 8192
SIGNATURE = b"Compressed by DATACOMP v 1.0 (c) 1991--1998 Tomasz Velbrin\r\n".ljust(64, b"\0")


def plain(name, byte):
    """The bytes of a file such as "kqk.nbb" in which every entry is the same."""
    return bytes([byte % 256]) * SIZES[name[:3]]["wb".index(name[-1])]


def checksum(data):
    """The CRC at the end of a packed header."""
    table = []
    for value in range(256):
        for _ in range(8):
            value = value >> 1 if value & 1 else value >> 1 ^ 0xEDB88320
        table.append(value)
    crc = 0
    for byte in data:
        crc = crc >> 8 ^ table[(crc ^ byte) & 255]
    return crc.to_bytes(4, "big")


def packed(data, log=13):
    """A packed file with this content: blocks of 2^log bytes, each stored as it is."""
    size = 1 << log
    blocks = [data[i:i + size] for i in range(0, len(data), size)]
    fields = [len(b) % size for b in (*blocks, blocks[-1])] + list(range(1, 25))
    bits = "".join(f"{field:0{log}b}" for field in fields)
    bits += "0" * (-len(bits) % 8) + "10000000"  # no symbol has a code
    body = bytes(8 * len(blocks)) + int(bits, 2).to_bytes(len(bits) // 8, "big")
    head = SIGNATURE + (80 + len(body) + 4).to_bytes(4, "big") + bytes([0, 0, log, 24])
    head += len(blocks).to_bytes(4, "big") + (0x004001F5).to_bytes(4, "big") + body
    return head + checksum(head) + data

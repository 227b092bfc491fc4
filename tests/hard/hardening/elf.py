"""What an executable says of itself: a reader of 64-bit ELF files, as far as the hardening shows in them."""

import struct

ET_DYN = 3
PT_LOAD, PT_GNU_STACK, PT_GNU_RELRO = 1, 0x6474E551, 0x6474E552
PF_X, PF_W = 1, 2
DT_NEEDED, DT_STRTAB, DT_RPATH, DT_TEXTREL, DT_BIND_NOW, DT_RUNPATH, DT_FLAGS, DT_FLAGS_1 = (
    1, 5, 15, 22, 24, 29, 30, 0x6FFFFFFB)
DF_TEXTREL, DF_BIND_NOW, DF_1_NOW, DF_1_PIE = 4, 8, 1, 0x08000000
SHT_DYNSYM = 11


class Elf:
    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        if self.data[:6] != b"\x7fELF\x02\x01":
            raise ValueError(f"{path} is not a 64-bit little-endian ELF file")
        self.type, = struct.unpack_from("<H", self.data, 16)
        programs, sections = struct.unpack_from("<QQ", self.data, 32)
        program_size, program_count, section_size, section_count, names = struct.unpack_from("<5H", self.data, 54)
        # kind, flags, offset, address, _, size in the file, ...
        self.programs = [struct.unpack_from("<IIQQQQQQ", self.data, programs + i * program_size)
                         for i in range(program_count)]
        # name, kind, flags, address, offset, size, link, ...
        self.sections = [struct.unpack_from("<IIQQQQIIQQ", self.data, sections + i * section_size)
                         for i in range(section_count)]
        self._names = self.sections[names][4]

    def text(self, offset):
        return self.data[offset:self.data.index(b"\0", offset)].decode()

    def section(self, name):
        """The section's bytes, or none."""
        for section in self.sections:
            if self.text(self._names + section[0]) == name:
                return self.data[section[4]:section[4] + section[5]]
        return None

    def flags_of(self, kind):
        """The flags of all segments of a kind."""
        return [program[1] for program in self.programs if program[0] == kind]

    def dynamic(self, tag):
        """The values of all dynamic entries with this tag."""
        entries = self.section(".dynamic") or b""
        return [value for found, value in struct.iter_unpack("<QQ", entries) if found == tag]

    def dynamic_text(self, tag):
        start = next(s[4] for s in self.sections if self.text(self._names + s[0]) == ".dynstr")
        return [self.text(start + value) for value in self.dynamic(tag)]

    def needed(self):
        return self.dynamic_text(DT_NEEDED)

    def imports(self):
        """The names that other libraries are asked for."""
        found = set()
        for _, kind, _, _, offset, size, link, *_ in self.sections:
            if kind == SHT_DYNSYM:
                names = self.sections[link][4]
                for name, _, _, home, _, _ in struct.iter_unpack("<IBBHQQ", self.data[offset:offset + size]):
                    if home == 0:
                        found.add(self.text(names + name))
        return found

    def switches(self):
        """For each way in which sources were compiled, the compiler's arguments."""
        return [line.split() for line in (self.section(".GCC.command.line") or b"").decode().split("\0") if line]

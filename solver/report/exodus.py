"""The model in an Exodus II file, read without packages: the header and small arrays of netCDF's classic formats."""
import math
import mmap
import struct

_SIZES = {1: 1, 2: 1, 3: 2, 4: 4, 5: 4, 6: 8, 7: 1, 8: 2, 9: 4, 10: 8, 11: 8}
_CODES = {1: "b", 3: "h", 4: "i", 5: "f", 6: "d", 7: "B", 8: "H", 9: "I", 10: "q", 11: "Q"}
_CHAR = 2


class Netcdf:
    """Dimensions, global attributes and variables of a file in the formats CDF-1, CDF-2 and CDF-5."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self._data = mmap.mmap(file.fileno(), 0, access=mmap.ACCESS_READ)
        if self._data[:4] == b"\x89HDF":
            raise ValueError("has the format of netCDF-4, which is not read here")
        if self._data[:3] != b"CDF" or self._data[3] not in (1, 2, 5):
            raise ValueError("is not in a classic netCDF format")
        self._at = 4
        self._count = 8 if self._data[3] == 5 else 4
        self._offset = 4 if self._data[3] == 1 else 8
        self._records = self._number(self._count)
        self._dimensions = [(self._name(), self._number(self._count)) for _ in range(self._list())]
        self.dimensions = dict(self._dimensions)
        self.attributes = self._attributes()
        self._variables = {}
        for _ in range(self._list()):
            name = self._name()
            shape = [self._number(self._count) for _ in range(self._number(self._count))]
            self._attributes()
            kind, size, begin = self._number(4), self._number(self._count), self._number(self._offset)
            self._variables[name] = (shape, kind, size, begin)

    def _number(self, size):
        self._at += size
        if self._at > len(self._data):
            raise ValueError("is cut off")
        return int.from_bytes(self._data[self._at - size:self._at], "big")

    def _list(self):
        self._number(4)
        return self._number(self._count)

    def _padded(self, size):
        if self._at + size > len(self._data):
            raise ValueError("is cut off")
        at, self._at = self._at, self._at + size + -size % 4
        return self._data[at:at + size]

    def _name(self):
        return self._padded(self._number(self._count)).decode("utf-8", "replace")

    def _attributes(self):
        result = {}
        for _ in range(self._list()):
            name, kind = self._name(), self._number(4)
            result[name] = self._values(kind, self._padded(self._number(self._count) * _SIZES[kind]))
        return result

    @staticmethod
    def _values(kind, data):
        if kind == _CHAR:
            return data.split(b"\0")[0].decode("utf-8", "replace")
        return list(struct.unpack(f">{len(data) // _SIZES[kind]}{_CODES[kind]}", data))

    def _is_record(self, name):
        shape = self._variables[name][0]
        return bool(shape) and self._dimensions[shape[0]][1] == 0

    def _take(self, kind, count, begin):
        size = _SIZES[kind] * count
        if begin + size > len(self._data):
            raise ValueError("is cut off")
        return self._data[begin:begin + size]

    def texts(self, name):
        """The rows of an array of characters; none where there is no such array."""
        if name not in self._variables:
            return []
        shape, kind, _, begin = self._variables[name]
        *rows, width = (self._dimensions[d][1] for d in shape)
        data = self._take(kind, math.prod(rows) * width, begin)
        return [self._values(_CHAR, data[k * width:(k + 1) * width]) for k in range(math.prod(rows))]

    def record_scalars(self, name):
        """A variable that has one number for each record."""
        if name not in self._variables:
            return []
        step = sum(v[2] for n, v in self._variables.items() if self._is_record(n))
        _, kind, _, begin = self._variables[name]
        return [self._values(kind, self._take(kind, 1, begin + k * step))[0] for k in range(self._records)]


def read_model(path):
    """Title, counts, blocks, node sets, information records and times of fields.  ValueError says what is wrong."""
    try:
        file = Netcdf(path)
        size = file.dimensions.get
        sets = lambda names, length: [(name, size(length % (k + 1), 0)) for k, name in enumerate(file.texts(names))]
        records = [text.strip() for text in file.texts("qa_records")]
        return {"title": file.attributes.get("title", ""), "nodes": size("num_nodes", 0), "elements": size("num_elem", 0),
                "blocks": sets("eb_names", "num_el_in_blk%d"), "node sets": sets("ns_names", "num_nod_ns%d"),
                "information": [line.rstrip() for line in file.texts("info_records")], "origin": records[:4],
                "times": file.record_scalars("time_whole"),
                "variables": file.texts("name_nod_var") + file.texts("name_elem_var")}
    except (KeyError, IndexError, struct.error, TypeError, OverflowError, MemoryError) as error:
        raise ValueError("is damaged") from error

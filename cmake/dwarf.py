# SPDX-FileCopyrightText: 2026 The wmsg authors
# SPDX-License-Identifier: Apache-2.0

"""Reads the debug information of an object, as readelf prints it, and tells in lines what classes, enumerations and
functions look like in memory. A line stands for itself, so that lists of lines can be compared as sets."""

import re
import subprocess

ENTRY = re.compile(r" <([0-9a-f]+)><([0-9a-f]+)>: Abbrev Number: \d+(?: \(DW_TAG_(\w+)\))?")
VALUE = re.compile(r"    <[0-9a-f]+>\s+DW_AT_(\w+)\s*: (?:\([a-z0-9_ ]+(?:, offset: \w+)?\):? ?)?"
                   r"(?:\(offset: \w+\): )?(.*)")
CLASSES = ("class_type", "structure_type", "union_type")
MARKS = {"pointer_type": " *", "reference_type": " &", "rvalue_reference_type": " &&"}
QUALIFIERS = {"const_type": "const", "volatile_type": "volatile"}


class Entry:
    """One entry of the tree; `parent` is None for a compilation unit."""

    def __init__(self, tag, parent, entries):
        self.tag, self.parent, self.values, self.children, self.entries = tag, parent, {}, [], entries

    @property
    def name(self):
        return self.values.get("name", "")

    def number(self, key, default=None):
        found = re.match(r"-?(?:0x[0-9a-f]+|\d+)", self.values.get(key, ""))
        return int(found[0], 0) if found else default

    @property
    def type(self):
        found = re.match(r"<0x([0-9a-f]+)>", self.values.get("type", ""))
        return self.entries[found[1]] if found else None

    def tagged(self, *tags):
        return [child for child in self.children if child.tag in tags]

    def has(self, key):
        return key in self.values

    @property
    def access(self):
        default = 3 if self.parent.tag == "class_type" else 1
        return {1: "public", 2: "protected", 3: "private"}[self.number("accessibility", default)]


def units(listing):
    """The compilation units in what `readelf --debug-dump=info --wide` printed."""
    entries, path, found = {}, [], []
    for line in listing.splitlines():
        if value := VALUE.match(line):
            path[-1].values[value[1]] = value[2]
        elif entry := ENTRY.match(line):
            del path[int(entry[1], 16):]
            if not entry[3]:
                continue
            path.append(Entry(entry[3], path[-1] if path else None, entries))
            entries[entry[2]] = path[-1]
            (path[-1].parent.children if path[-1].parent else found).append(path[-1])
    return found


def units_of(path):
    return units(subprocess.run(["readelf", "--debug-dump=info", "--wide", path],
                                check=True, capture_output=True, text=True).stdout)


def bare(entry):
    """A type without the names that typedefs give it, nor what it is qualified with."""
    while entry and entry.tag in ("typedef", *QUALIFIERS):
        entry = entry.type
    return entry


def qualified(entry):
    spaces = "namespace", *CLASSES
    return qualified(entry.parent) + "::" + entry.name if entry.parent.tag in spaces else entry.name


def type_name(entry):
    """A type as C++ writes it, more or less. Typedefs are looked through: they are names alone."""
    if not entry:
        return "void"
    if entry.tag == "typedef":
        return type_name(entry.type)
    if entry.tag in MARKS:
        return type_name(entry.type) + MARKS[entry.tag]
    if entry.tag in QUALIFIERS:
        word, target = QUALIFIERS[entry.tag], type_name(entry.type)
        return f"{target} {word}" if target.endswith(("*", "&")) else f"{word} {target}"
    if entry.tag == "array_type":
        bounds = (f"[{child.number('upper_bound', -1) + 1}]" for child in entry.tagged("subrange_type"))
        return f"{type_name(entry.type)} {''.join(bounds)}"
    if entry.tag == "subroutine_type":
        return signature(entry, "")
    if entry.tag == "ptr_to_member_type":
        return f"{type_name(entry.type)} of {entry.values.get('containing_type')}"
    return qualified(entry)


def parameters(function):
    return "(" + ", ".join(type_name(child.type) for child in function.tagged("formal_parameter")
                           if not child.has("artificial")) + ")"


def is_const(function):
    this = next((child for child in function.tagged("formal_parameter") if child.has("artificial")), None)
    target = bare(this.type).type if this and function.has("object_pointer") else None
    return target is not None and target.tag == "const_type"


def signature(function, name):
    makes = function.name.startswith("~") or function.name == function.parent.name.split("<")[0]
    result = "" if makes else type_name(function.type) + " "
    return f"{result}{name}{parameters(function)}{' const' if is_const(function) else ''}"


def alignment(entry):
    entry = bare(entry)
    while entry.tag == "array_type":
        entry = bare(entry.type)
    if entry.has("alignment"):
        return entry.number("alignment")
    if entry.tag not in CLASSES:
        return entry.number("byte_size", 1)
    parts = [child.type for child in entry.tagged("member", "inheritance") if not child.has("external")]
    return max(map(alignment, parts), default=1)


def enumeration_lines(entry):
    head = f"enum {qualified(entry)}: "
    return [head + f"{entry.number('byte_size')} bytes, {type_name(entry.type)}"] \
        + [head + f"{child.name} = {child.number('const_value')}" for child in entry.tagged("enumerator")]


def member_lines(child):
    """The lines of a data member. Private names do not matter. Of statics only constants do, and private ones too: they
    are compiled into the inline code that programs have, and g++ tells no difference."""
    if child.tag == "variable" or child.has("external"):
        value = child.number("const_value")
        return [] if value is None else [f"static {type_name(child.type)} {child.name} = {value}"]
    is_private = child.access == "private"
    place = child.number("data_member_location", 0)
    if child.has("data_bit_offset"):
        place = f"bit {child.number('data_bit_offset')}, {child.number('bit_size')} wide"
    return [f"at {place}: {type_name(child.type)} {'(private)' if is_private else child.name}"]


def function_lines(child):
    """The line of a member function: how it is called, and its place in the virtual table."""
    is_virtual = child.number("virtuality", 0)
    if child.has("deleted") or child.access == "private" and not is_virtual:
        return []
    slot = re.search(r"DW_OP_constu: (\d+)", child.values.get("vtable_elem_location", ""))
    words = [child.access] if child.access != "public" else []
    words += ["static"] if not child.has("object_pointer") else []
    words += [f"virtual {slot[1]}" if slot else "virtual"] if is_virtual else []
    return [" ".join([*words, signature(child, child.name)])]


def child_lines(child):
    if child.tag == "inheritance":
        return [f"at {child.number('data_member_location')}: base {type_name(child.type)}"]
    if child.tag in ("member", "variable"):
        return member_lines(child)
    return function_lines(child) if child.tag == "subprogram" else []


def class_lines(entry):
    """The lines of a class and of the types in it. The count of its virtual functions is a line's part, so that one
    more is a change: classes that derive from it have a table of their own."""
    head = f"class {qualified(entry)}: "
    virtuals = sum(child.has("virtuality") for child in entry.tagged("subprogram"))
    facts = f"{entry.number('byte_size')} bytes, aligned to {alignment(entry)}, {virtuals} virtual functions"
    lines = [head + facts]
    for child in entry.children:
        if not child.has("artificial"):
            lines += [head + line for line in child_lines(child)]
    for child in entry.tagged("enumeration_type", *CLASSES):
        if child.name and child.access != "private":
            lines += lines_of(child)
    return lines


def lines_of(entry):
    """The lines of an entry outside classes, or of a type in one."""
    if entry.tag == "subprogram":
        return [f"function {entry.name}: {signature(entry, entry.name)}"]
    if entry.tag == "variable":
        return [f"variable {entry.name}: {type_name(entry.type)}"]
    if entry.has("declaration"):
        return []
    if entry.tag == "namespace":
        return [line for child in entry.children for line in lines_of(child)]
    if entry.tag in CLASSES:
        return class_lines(entry)
    return enumeration_lines(entry) if entry.tag == "enumeration_type" else []


def lines(unit, is_ours):
    """The lines of a compilation unit; `is_ours` tells by the name whether what is outside classes is wanted."""
    return list(dict.fromkeys(line for entry in unit.children if is_ours(entry.name) for line in lines_of(entry)))

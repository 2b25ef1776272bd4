#!/usr/bin/env python3
"""Generates the UN/EDIFACT definitions of one directory from the structure data of the standard.

    python3 generate.py STANDARDS_DIR [DIRECTORY] [OUTPUT]

STANDARDS_DIR is the folder that holds edifact/<DIRECTORY>/ and edifact/service/ (see README.md
beside this script). DIRECTORY defaults to D96A; OUTPUT to edifact_<directory>.yaml beside this
script, e.g. edifact_d96a.yaml.

The file holds two message sets:

- EDIFACT_INTERCHANGE: UNA, UNB, the messages either directly or in UNG ... UNE groups, UNZ. The
  separators are read from UNA when it is there.
- EDIFACT_<DIRECTORY>: every message of the directory, and the service message CONTRL, each
  picked by the message type, version and release of UNH. Segments, composites and data elements
  are the directory's; the code lists of the directory are validation tables.
"""

import json
import os
import sys

# The shared writer lives one folder up; running a generator leaves no compiled files behind.
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import definition_yaml  # noqa: E402

INTERCHANGE_SEGMENTS = ["UNB", "UNG", "UNE", "UNZ"]
MESSAGE_SERVICE_SEGMENTS = ["UNH", "UNT", "UNS"]
# ARR repeats C770 a hundred times in the directory's listing, where the data has it once.
ARR_CELL_REPEATS = 100


def load(path):
    with open(path, encoding="utf-8") as f:
        return json.load(f)


def pascal(name):
    return name[0].upper() + name[1:] if name else name


def numbered(names):
    """Names that occur more than once in one list get 1, 2, ... behind them."""
    total = {n: names.count(n) for n in names}
    seen = {}
    result = []
    for name in names:
        if total[name] > 1:
            seen[name] = seen.get(name, 0) + 1
            result.append(f"{name}{seen[name]}")
        else:
            result.append(name)
    return result


class Directory:
    """The segments, composites, elements and code lists of a directory and its service segments."""

    def __init__(self, standards, directory):
        base = os.path.join(standards, "edifact")
        self.data = load(os.path.join(base, directory, "segments.json"))
        # Service segments of syntax version 3; those only version 4 has (UGH, UGT) from there.
        self.service = [load(os.path.join(base, "service", v, "segments.json")) for v in ("V3", "V4")]
        self.codes = load(os.path.join(base, directory, "codes.json"))["codes"]
        self.service_codes = load(os.path.join(base, directory, "service_codes.json"))["codes"]
        self.sources = [self.data["source"], self.service[0]["source"]]

    def segment(self, tag):
        for source in [self.data] + self.service:
            if tag in source["segments"]:
                return source["segments"][tag], source
        raise SystemExit(f"segment {tag} is in no segment directory")

    def composite(self, number, source):
        for s in [source, self.data] + self.service:
            if number in s["composites"]:
                return s["composites"][number], s
        raise SystemExit(f"composite {number} is in no segment directory")

    def element(self, number, source):
        for s in [source, self.data] + self.service:
            if number in s["elements"]:
                return s["elements"][number]
        raise SystemExit(f"element {number} is in no segment directory")

    def code_list(self, number):
        return self.codes.get(number) or self.service_codes.get(number)


class SetBuilder:
    """Segments, composites and tables of one message set, made as its messages name them."""

    def __init__(self, directory):
        self.directory = directory
        self.segments = {}
        self.composites = {}
        self.tables = {}

    def element_field(self, name, number, source, required):
        element = self.directory.element(number, source)
        field = {"name": name}
        if element["type"] == "n":
            # Numbers keep their text: the strict type checks digits, sign and decimal mark and
            # counts neither sign nor mark, as the directory counts lengths.
            field["dataType"] = "strictReal"
        if required:
            field["required"] = True
        fixed = ".." not in element["format"]
        if fixed and element["max"] > 1:
            field["minLength"] = element["max"]
        field["maxLength"] = element["max"]
        if self.directory.code_list(number):
            field["table"] = self.table(number)
        return field

    def table(self, number):
        if number not in self.tables:
            codes = self.directory.code_list(number)
            self.tables[number] = {"name": number,
                                   "entries": [{"value": v, "description": d} if d else v for v, d in codes.items()]}
        return number

    def composite(self, number, source):
        if number not in self.composites:
            record, home = self.directory.composite(number, source)
            self.composites[number] = None   # reserved: the order is that of first use
            parts = record["elements"]
            names = numbered([pascal(self.directory.element(p["element"], home)["name"]) for p in parts])
            fields = [self.element_field(n, p["element"], home, p["status"] == "M") for n, p in zip(names, parts)]
            self.composites[number] = {"name": number, "separator": "field2",
                                       "userData": {"Name": pascal(record["name"])}, "fields": fields}
        return number

    def segment(self, tag):
        if tag in self.segments:
            return tag
        record, source = self.directory.segment(tag)
        parts = list(record["elements"])
        if tag == "ARR":
            cells = [p for p in parts if p.get("composite") == "C770"]
            if len(cells) == 1:
                parts = [p for p in parts if p.get("composite") != "C770"] + cells * ARR_CELL_REPEATS
        names = numbered([pascal(p["name"]) for p in parts])
        fields = []
        for name, part in zip(names, parts):
            required = part["status"] == "M"
            if "composite" in part:
                field = {"name": name, "composite": self.composite(part["composite"], source)}
                if required:
                    field["required"] = True
                fields.append(field)
            else:
                fields.append(self.element_field(name, part["element"], source, required))
        self.segments[tag] = {"name": tag, "userData": {"Name": pascal(record["name"])}, "fields": fields}
        return tag

    def items(self, nodes):
        result = []
        seen = {}
        for node in nodes:
            if "segment" in node:
                tag = self.segment(node["segment"])
                item = {"segment": tag}
                seen[tag] = seen.get(tag, 0) + 1
                if seen[tag] > 1:
                    item["name"] = f"{tag}:{seen[tag]}"
            else:
                item = {"group": node["group"]}
            if node["status"] == "M":
                item["required"] = True
            if node["repeat"] != 1:
                item["maxRepeats"] = node["repeat"]
            if "children" in node:
                item["items"] = self.items(node["children"])
            result.append(item)
        return result

    def parts(self):
        return {"validationTables": [self.tables[k] for k in sorted(self.tables)],
                "composites": [self.composites[k] for k in sorted(self.composites)],
                "segments": [self.segments[k] for k in sorted(self.segments)]}


# UN/EDIFACT, syntax version 3. The optional UNA service string advice may change every
# separator: its six characters after the tag are, in order, the component separator, the data
# element separator, the decimal mark, the release character, a reserved place and the segment
# terminator. The first four come from the stream right behind the tag (positions 1 to 4), the
# terminator from its end (position -1). The release character is user1.
SEPARATORS = {
    "segment": {"value": "'", "style": "terminator", "replacement": "?'", "fromField": "UNA", "position": -1},
    "field1": {"value": "+", "style": "initiator", "replacement": "?+", "fromField": "UNA", "position": 2},
    "field2": {"value": ":", "replacement": "?:", "fromField": "UNA", "position": 1},
    "decimal": {"value": ".", "fromField": "UNA", "position": 3},
    "user1": {"value": "?", "replacement": "??", "fromField": "UNA", "position": 4},
}
MESSAGE_SEPARATORS = {
    "segment": {"value": "'", "style": "terminator", "replacement": "?'"},
    "field1": {"value": "+", "style": "initiator", "replacement": "?+"},
    "field2": {"value": ":", "replacement": "?:"},
    "decimal": ".",
    "user1": {"value": "?", "replacement": "??"},
}


def interchange_set(directory, message_set_name):
    builder = SetBuilder(directory)
    for tag in INTERCHANGE_SEGMENTS:
        builder.segment(tag)
    parts = builder.parts()
    # UNA has no fields of the directory: its separators are read by the set, and the reserved
    # place is its one field.
    parts["segments"].insert(0, {"name": "UNA", "separator": "none", "fixedWidth": True,
                                 # Required, so that the reserved place is written back as a filler.
                                 "fields": [{"name": "Reserved", "required": True, "maxLength": 1}]})
    messages = {"embeddedSet": message_set_name, "name": "MESSAGE", "maxRepeats": 0}
    return {
        "name": "EDIFACT_INTERCHANGE",
        "trimSegments": True,
        "separators": SEPARATORS,
        "headerItemCount": 2,
        **parts,
        "messages": [{"name": "INTERCHANGE", "items": [
            {"segment": "UNA"},
            {"segment": "UNB", "required": True},
            messages,
            {"group": "FUNCTIONAL_GROUP", "maxRepeats": 0, "items": [
                {"segment": "UNG", "required": True},
                dict(messages, required=True),
                {"segment": "UNE", "required": True}]},
            {"segment": "UNZ", "required": True}]}],
    }


def message_set(directory, name, messages):
    builder = SetBuilder(directory)
    for tag in MESSAGE_SERVICE_SEGMENTS:
        builder.segment(tag)
    records = []
    for data in messages:
        header = data["header"]
        records.append({"name": data["id"], "type": f"{header['0065']} {header['0052']} {header['0054']}",
                        "items": builder.items(data["structure"])})
    return {
        "name": name,
        "trimSegments": True,
        # Messages use the separators their interchange read from UNA.
        "initializeSeparatorsFromParent": True,
        "separators": MESSAGE_SEPARATORS,
        "messageTypeFields": ["UNH/2/1", "UNH/2/2", "UNH/2/3"],
        **builder.parts(),
        "messages": records,
    }


def main(argv):
    if len(argv) not in (2, 3, 4):
        raise SystemExit(__doc__)
    standards = argv[1]
    name = argv[2] if len(argv) > 2 else "D96A"
    here = os.path.dirname(os.path.abspath(__file__))
    output = argv[3] if len(argv) > 3 else os.path.join(here, f"edifact_{name.lower()}.yaml")
    directory = Directory(standards, name)
    folder = os.path.join(standards, "edifact", name, "messages")
    messages = [load(os.path.join(folder, f)) for f in sorted(os.listdir(folder)) if f.endswith(".json")]
    control = load(os.path.join(standards, "edifact", "service", "V3", "messages", "CONTRL.json"))
    message_set_name = f"EDIFACT_{name}"
    document = {
        "version": 883,
        "userData": {"Name": f"Vantrelia UN/EDIFACT {name} definitions",
                     "Contents": f"UN/EDIFACT interchange, syntax version 3, with the {len(messages)} messages of "
                                 f"directory {name} and CONTRL"},
        "messageSets": [interchange_set(directory, message_set_name),
                        message_set(directory, message_set_name, messages + [control])],
    }
    sources = sorted({f"{s['repository']} {os.path.dirname(s['path'])} @ {s['commit'][:12]}"
                      for s in directory.sources + [messages[0]["source"], control["source"]]})
    header = [
        "Generated by standards/edifact/generate.py; do not edit by hand.",
        f"Source: the UN/EDIFACT structure data of the shared standards folder (edifact/{name}/,",
        "edifact/service/V3/ and V4/), converted from the mapping data below, which is licensed",
        "LGPL-3.0-or-later (see NOTICE beside this file) and was rebuilt from the UNECE directories:",
    ] + [f"  {s}" for s in sources] + [""]
    with open(output, "w", encoding="utf-8") as f:
        f.write(definition_yaml.dump(document, header))


if __name__ == "__main__":
    main(sys.argv)

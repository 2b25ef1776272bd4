#!/usr/bin/env python3
"""Generates x12.yaml, the X12 definitions, from the structure data of the X12 standards.

    python3 generate.py STANDARDS_DIR [OUTPUT]

STANDARDS_DIR is the folder that holds x12/elements.json, x12/005010/ and x12/004010/ (see
README.md beside this script). OUTPUT defaults to x12.yaml beside this script.

The file holds four message sets:

- X12_005010_INTERCHANGE and X12_004010_INTERCHANGE: ISA, TA1, GS ... GE, IEA. The separators are
  read from ISA: the element separator right behind the tag, the repetition separator (005010
  only) from ISA11, the component separator from ISA16, and the segment terminator from the
  character after ISA16. Each embeds the transaction sets of its version. ISA12 tells the two
  apart.
- X12_005010 and X12_004010: the transaction sets, ST ... SE, picked by ST01, and where two
  guides share an ST01 value (837P and 837I, 277 and 277CA) by ST03. Loops are groups, and
  segments of one id that share a loop, or loops that open with the same segment, are told apart
  by match lists on the qualifier elements whose code lists differ. A loop that alone opens with
  its segment matches on the segment's qualifier too, so that a qualifier it doesn't allow is
  refused instead of being read as its own.

The HIPAA guides come from the data; 850, 810, 855 and 856 are written here from the published
transaction set tables (their main loops and segments, the same at both versions).
"""

import json
import os
import re
import sys

# The shared writer lives one folder up; running a generator leaves no compiled files behind.
sys.dont_write_bytecode = True
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import definition_yaml  # noqa: E402

HIPAA_005010 = ["270", "271", "277", "277CA", "820", "834", "835", "837P", "837I", "999"]
TRADE = ["850", "810", "855", "856"]
# The functional identifier code (GS01) of each trade set.
TRADE_FUNCTIONAL_IDS = {"850": "PO", "810": "IN", "855": "PR", "856": "SH"}

# Elements of the trade sets that the guides' dictionary doesn't carry: name, type, min, max,
# as the X12 data element dictionary gives them.
EXTRA_ELEMENTS = {
    "76": ("Invoice Number", "AN", 1, 22),
    "79": ("Lading Description", "AN", 1, 50),
    "80": ("Lading Quantity", "N0", 1, 7),
    "87": ("Marks and Numbers", "AN", 1, 48),
    "88": ("Marks and Numbers Qualifier", "ID", 1, 2),
    "91": ("Transportation Method/Type Code", "ID", 1, 2),
    "92": ("Purchase Order Type Code", "ID", 2, 2),
    "133": ("Routing Sequence Code", "ID", 1, 2),
    "187": ("Weight Qualifier", "ID", 1, 2),
    "326": ("Request Reference Number", "AN", 1, 45),
    "327": ("Change Order Sequence Number", "AN", 1, 8),
    "330": ("Quantity Ordered", "R", 1, 15),
    "333": ("Terms Basis Date Code", "ID", 1, 2),
    "336": ("Terms Type Code", "ID", 2, 2),
    "351": ("Terms Discount Days Due", "N0", 1, 3),
    "362": ("Terms Discount Amount", "N2", 1, 10),
    "368": ("Shipment/Order Status Code", "ID", 2, 2),
    "370": ("Terms Discount Due Date", "DT", 8, 8),
    "382": ("Number of Units Shipped", "R", 1, 10),
    "386": ("Terms Net Days", "N0", 1, 3),
    "387": ("Routing", "AN", 1, 35),
    "396": ("Shipment Identification", "AN", 2, 30),
    "446": ("Terms Net Due Date", "DT", 8, 8),
    "587": ("Acknowledgment Type", "ID", 2, 2),
    "646": ("Quantity Shipped to Date", "R", 1, 15),
    "668": ("Line Item Status Code", "ID", 2, 2),
}

# Segments of the trade sets: name, then (element, requirement) in position order. M is
# mandatory; O and X (conditional on a syntax note) are optional.
TRADE_SEGMENTS = {
    "BEG": ("Beginning Segment for Purchase Order",
            "353 M, 92 M, 324 M, 328 O, 373 M, 367 O, 587 O"),
    "BIG": ("Beginning Segment for Invoice", "373 M, 76 M, 373 O, 324 O, 328 O, 327 O, 640 O, 353 O"),
    "BAK": ("Beginning Segment for Purchase Order Acknowledgment",
            "353 M, 587 M, 324 M, 373 M, 328 O, 326 O, 367 O, 127 O, 373 O"),
    "BSN": ("Beginning Segment for Ship Notice", "353 M, 396 M, 373 M, 337 M, 1005 O, 640 O"),
    "CUR": ("Currency", "98 M, 100 M, 280 O"),
    "REF": ("Reference Information", "128 M, 127 X, 352 X, C040 O"),
    "PER": ("Administrative Communications Contact", "366 M, 93 O, 365 X, 364 X, 365 X, 364 X, 365 X, 364 X, 443 O"),
    "DTM": ("Date/Time Reference", "374 M, 373 X, 337 X, 623 O, 1250 X, 1251 X"),
    "SAC": ("Service, Promotion, Allowance, or Charge Information",
            "248 M, 1300 X, 559 X, 1301 X, 610 O, 378 X, 332 O, 118 O, 355 X, 380 X, 380 O, 331 X, 127 X, 770 O, 352 X"),
    "ITD": ("Terms of Sale/Deferred Terms of Sale", "336 O, 333 O, 338 O, 370 X, 351 X, 446 O, 386 O, 362 O"),
    "TD5": ("Carrier Details (Routing Sequence/Transit Time)", "133 X, 66 X, 67 X, 91 X, 387 X, 368 X"),
    "TD1": ("Carrier Details (Quantity and Weight)", "103 O, 80 X, 23 O, 22 X, 79 O, 187 X, 81 X, 355 X"),
    "N1": ("Party Identification", "98 M, 93 X, 66 X, 67 X, 706 O, 98 O"),
    "N2": ("Additional Name Information", "93 M, 93 O"),
    "N3": ("Party Location", "166 M, 166 O"),
    "N4": ("Geographic Location", "19 O, 156 X, 116 O, 26 X, 309 X, 310 O"),
    "PO1": ("Baseline Item Data", "350 O, 330 X, 355 O, 212 X, 639 O, 235 X, 234 X, 235 X, 234 X, 235 X, 234 X"),
    "IT1": ("Baseline Item Data (Invoice)", "350 O, 358 X, 355 X, 212 X, 639 O, 235 X, 234 X, 235 X, 234 X, 235 X, 234 X"),
    "PID": ("Product/Item Description", "349 M, 750 O, 559 X, 751 X, 352 X"),
    "ACK": ("Line Item Acknowledgment", "668 M, 380 X, 355 X, 374 X, 373 O, 326 O, 235 X, 234 X"),
    "CTT": ("Transaction Totals", "354 M, 347 O"),
    "AMT": ("Monetary Amount Information", "522 M, 782 M, 478 O"),
    "TDS": ("Total Monetary Value Summary", "610 M, 610 O, 610 O, 610 O"),
    "HL": ("Hierarchical Level", "628 M, 734 O, 735 M, 736 O"),
    "LIN": ("Item Identification", "350 O, 235 M, 234 M, 235 X, 234 X, 235 X, 234 X"),
    "SN1": ("Item Detail (Shipment)", "350 O, 382 M, 355 M, 646 O, 330 X, 355 X"),
    "PRF": ("Purchase Order Reference", "324 M, 328 O, 327 O, 373 O"),
    "MAN": ("Marks and Numbers Information", "88 M, 87 M, 87 O"),
    "ST": ("Transaction Set Header", "143 M, 329 M, 1705 O"),
    "SE": ("Transaction Set Trailer", "96 M, 329 M"),
}


# The trade sets' tables: (segment, requirement, repeat) and loops as (loop id, requirement,
# repeat, [children]); ">1" is unbounded. The first child of a loop opens it.
def _party_loop(refs=12):
    return ("N1_LOOP", "O", 200, [("N1", "M", 1), ("N2", "O", 2), ("N3", "O", 2), ("N4", "O", ">1"),
                                  ("REF", "O", refs), ("PER", "O", ">1")])


def _charge_loop(with_currency):
    children = [("SAC", "M", 1)] + ([("CUR", "O", 1)] if with_currency else [])
    return ("SAC_LOOP", "O", 25, children)


TRADE_STRUCTURES = {
    "850": ("Purchase Order", [
        ("ST", "M", 1), ("BEG", "M", 1), ("CUR", "O", 1), ("REF", "O", ">1"), ("PER", "O", 3),
        _charge_loop(True), ("ITD", "O", ">1"), ("DTM", "O", 10), ("TD5", "O", 12), _party_loop(),
        ("PO1_LOOP", "M", 100000, [
            ("PO1", "M", 1), ("CUR", "O", 1), ("PID_LOOP", "O", 1000, [("PID", "M", 1)]),
            ("REF", "O", ">1"), ("PER", "O", 3), _charge_loop(True), ("ITD", "O", 2), ("DTM", "O", 10),
            ("TD5", "O", 12), _party_loop()]),
        ("CTT_LOOP", "O", 1, [("CTT", "M", 1), ("AMT", "O", 1)]),
        ("SE", "M", 1)]),
    "810": ("Invoice", [
        ("ST", "M", 1), ("BIG", "M", 1), ("CUR", "O", 1), ("REF", "O", 12), ("PER", "O", 3), _party_loop(),
        ("ITD", "O", ">1"), ("DTM", "O", 10), ("TD5", "O", 12),
        ("IT1_LOOP", "O", 200000, [
            ("IT1", "M", 1), ("CUR", "O", 1), ("PID_LOOP", "O", 1000, [("PID", "M", 1)]),
            ("REF", "O", ">1"), ("DTM", "O", 10), _charge_loop(False), _party_loop()]),
        ("TDS", "M", 1), _charge_loop(False), ("CTT", "O", 1),
        ("SE", "M", 1)]),
    "855": ("Purchase Order Acknowledgment", [
        ("ST", "M", 1), ("BAK", "M", 1), ("CUR", "O", 1), ("REF", "O", ">1"), ("PER", "O", 3),
        _charge_loop(True), ("ITD", "O", ">1"), ("DTM", "O", 10), ("TD5", "O", 12), _party_loop(),
        ("PO1_LOOP", "O", 100000, [
            ("PO1", "M", 1), ("CUR", "O", 1), ("PID_LOOP", "O", 1000, [("PID", "M", 1)]),
            ("REF", "O", ">1"), ("DTM", "O", 10), _charge_loop(True), ("ACK", "O", 104), _party_loop()]),
        ("CTT_LOOP", "O", 1, [("CTT", "M", 1), ("AMT", "O", 1)]),
        ("SE", "M", 1)]),
    "856": ("Ship Notice/Manifest", [
        ("ST", "M", 1), ("BSN", "M", 1), ("DTM", "O", 10),
        ("HL_LOOP", "M", 200000, [
            ("HL", "M", 1), ("LIN", "O", 1), ("SN1", "O", 1), ("PRF", "O", 1),
            ("PID_LOOP", "O", 200, [("PID", "M", 1)]), ("TD1", "O", 20), ("TD5", "O", 12),
            ("REF", "O", ">1"), ("PER", "O", 3), ("MAN", "O", ">1"), ("DTM", "O", 10), _party_loop()]),
        ("CTT", "O", 1),
        ("SE", "M", 1)]),
}


def load(path):
    with open(path, encoding="utf-8") as f:
        return json.load(f)


def max_repeats(repeat):
    """The definition's maxRepeats: 0 is unbounded."""
    return 0 if repeat == ">1" else int(repeat)


def data_type(x12_type):
    # Numbers keep their text: the strict types check digits and sign and count no sign or point,
    # as X12 counts lengths. N0, N2: implied decimals are digits on the wire all the same.
    if x12_type.startswith("N"):
        return "strictInteger"
    if x12_type == "R":
        return "strictReal"
    return None


def regex_of_codes(codes):
    # Match values are anchored regular expressions; the group keeps the anchors around every
    # alternative.
    escaped = [re.sub(r"([.^$*+?()\[\]{}|\\])", r"\\\1", code) for code in codes]
    return escaped[0] if len(escaped) == 1 else "(" + "|".join(escaped) + ")"


class Dictionary:
    """Element and composite facts, from the guides' dictionary and the trade additions."""

    def __init__(self, standards):
        data = load(os.path.join(standards, "x12", "elements.json"))
        self.elements = dict(data["elements"])
        for number, (name, kind, low, high) in EXTRA_ELEMENTS.items():
            assert number not in self.elements, number
            self.elements[number] = {"name": name, "type": kind, "min": low, "max": high}
        self.composites = data["composites"]
        self.source = data["source"]

    def field(self, name, number, repeat=1):
        element = self.elements[number]
        field = {"name": name}
        kind = data_type(element["type"])
        if kind:
            field["dataType"] = kind
        if element["min"] > 1:
            field["minLength"] = element["min"]
        field["maxLength"] = element["max"]
        if repeat != 1:
            field["maxRepeats"] = repeat
        field["userData"] = {"Name": element["name"]}
        return field

    def composite_known(self, number):
        return bool(self.composites.get(number, {}).get("elements"))

    def composite_field_name(self, number, seq):
        return f"{number}{seq:02d}"

    def composite(self, number):
        record = self.composites[number]
        fields = [self.field(self.composite_field_name(number, c["seq"]), c["element"]) for c in record["elements"]]
        return {"name": number, "separator": "field2", "userData": {"Name": record["name"]}, "fields": fields}


class TableBook:
    """Validation tables of one set: one per distinct code list of an element."""

    def __init__(self, external):
        self.external = external
        self.by_key = {}
        self.tables = []
        self.counts = {}

    def table_for(self, element, codes):
        key = (element, tuple(codes))
        if key not in self.by_key:
            n = self.counts.get(element, 0) + 1
            self.counts[element] = n
            prefix = "" if element[0].isalpha() else "E"
            name = f"{prefix}{element}_{n}"
            self.by_key[key] = name
            self.tables.append({"name": name, "entries": list(codes)})
        return self.by_key[key]

    def external_table(self, codeset):
        key = ("external", codeset)
        if key not in self.by_key:
            record = self.external[codeset]
            self.by_key[key] = codeset
            self.tables.append({"name": codeset, "entries": list(record["codes"])})
        return self.by_key[key]


class SegmentBook:
    """The segments of one set: one definition per tag, its fields the union of all uses."""

    def __init__(self, dictionary):
        self.dictionary = dictionary
        self.positions = {}   # tag -> {position: (element or composite, repeat)}
        self.order = []

    def note(self, tag, position, number, repeat):
        if tag not in self.positions:
            self.positions[tag] = {}
            self.order.append(tag)
        known = self.positions[tag].get(position)
        if known and known[0] != number:
            raise SystemExit(f"{tag}{position:02d} is element {known[0]} in one use and {number} in another")
        previous = known[1] if known else 1
        widest = 0 if 0 in (previous, repeat) else max(previous, repeat)
        self.positions[tag][position] = (number, widest)

    def note_use(self, segment):
        for position, element in enumerate(segment["elements"], 1):
            number = element.get("composite") or element["element"]
            self.note(segment["segment"], position, number, max_repeats(element.get("repeat", 1)))

    def definitions(self):
        composites, segments = [], []
        for tag in self.order:
            fields = []
            positions = self.positions[tag]
            for position in range(1, max(positions) + 1):
                name = f"{tag}{position:02d}"
                number, repeat = positions.get(position, (None, 1))
                if number is None:
                    fields.append({"name": name})
                elif number in self.dictionary.composites:
                    if self.dictionary.composite_known(number):
                        if number not in composites:
                            composites.append(number)
                        field = {"name": name, "composite": number}
                        if repeat != 1:
                            field["maxRepeats"] = repeat
                        fields.append(field)
                    else:
                        # A composite the data names but never spells out is never used: it stays
                        # one plain field so that its position is kept.
                        fields.append({"name": name, "userData": {"Name": self.dictionary.composites[number]["name"]}})
                else:
                    fields.append(self.dictionary.field(name, number, repeat))
            segments.append({"name": tag, "fields": fields})
        return [self.dictionary.composite(c) for c in sorted(composites)], segments


def element_override(element, tables, dictionary):
    """The item-level facts of one element or component: usage R, the guide's codes, a pattern."""
    entry = {}
    if element.get("usage") == "R":
        entry["required"] = True
    if "codes" in element:
        entry["table"] = tables.table_for(element["element"], element["codes"])
    elif "codes_external" in element:
        entry["table"] = tables.external_table(element["codes_external"])
    if "pattern" in element:
        entry["format"] = "@" + element["pattern"]
    if "elements" in element:
        nested = {}
        for component in element["elements"]:
            seq = int(component["ref"].rsplit("-", 1)[1])
            inner = element_override(component, tables, dictionary)
            if inner:
                nested[dictionary.composite_field_name(element["composite"], seq)] = inner
        if nested and dictionary.composite_known(element["composite"]):
            entry["overrides"] = nested
    return entry


def qualifiers(segment):
    """Field path -> (code list, required) of each element or component of a segment use that
    has a code list, in position order."""
    found = {}
    for position, element in enumerate(segment["elements"], 1):
        name = f"{segment['segment']}{position:02d}"
        if "codes" in element:
            found[name] = (element["codes"], element.get("usage") == "R")
        for component in element.get("elements") or []:
            if "codes" in component:
                seq = int(component["ref"].rsplit("-", 1)[1])
                required = element.get("usage") == "R" and component.get("usage") == "R"
                found[f"{name}/{element['composite']}{seq:02d}"] = (component["codes"], required)
    return found


def opening_segment(node):
    return node if "segment" in node else opening_segment(node["children"][0])


def _telling_paths(lists):
    """The fewest qualifiers, taken greedily, that tell every pair of siblings apart. A path tells
    two siblings apart firmly when both list codes and no code is in both; weakly when only one
    lists codes. Firm before weak, required elements before situational ones (a match on an
    absent element refuses the segment), then by position."""
    members = list(lists)
    open_pairs = {(a, b) for i, a in enumerate(members) for b in members[i + 1:]}
    paths = []
    for path in lists[members[0]].keys() | {p for q in lists.values() for p in q}:
        if path not in paths:
            paths.append(path)

    def tells(path, a, b, firm):
        codes_a, codes_b = lists[a].get(path), lists[b].get(path)
        if codes_a and codes_b:
            return not set(codes_a[0]) & set(codes_b[0])
        return not firm and bool(codes_a or codes_b)

    def rank(path):
        required = all(q[path][1] for q in lists.values() if path in q)
        return (not required, path)

    chosen = []
    for firm in (True, False):
        for path in sorted(paths, key=rank):
            told = {(a, b) for a, b in open_pairs if tells(path, a, b, firm)}
            if told:
                chosen.append(path)
                open_pairs -= told
    if open_pairs:
        raise SystemExit(f"no qualifier tells apart the siblings {sorted(open_pairs)} of {sorted(lists)}")
    return chosen


def sibling_matches(children):
    """For each child that shares its opening tag with a sibling: the match list that tells them
    apart."""
    by_tag = {}
    for index, child in enumerate(children):
        by_tag.setdefault(opening_segment(child)["segment"], []).append(index)
    result = {}
    for indexes in by_tag.values():
        if len(indexes) < 2:
            continue
        lists = {i: qualifiers(opening_segment(children[i])) for i in indexes}
        telling = _telling_paths(lists)
        for i in indexes:
            entries = [{"path": p, "value": regex_of_codes(lists[i][p][0])} for p in telling if p in lists[i]]
            if entries:
                result[i] = entries
    return result


def loop_openers(children):
    """The opening segment of every loop of a structure, nested ones included."""
    for child in children:
        if "loop" in child:
            yield opening_segment(child)
            yield from loop_openers(child["children"])


def opener_qualifiers(structure):
    """Segment id -> the paths that are its qualifiers in one transaction set: those on which two
    loops that the segment opens list codes that have none in common (NM101 is 85 in 2010AA and
    QC in 2010CA), so that the element alone tells loops apart. An element whose lists overlap
    wherever the segment opens a loop is a code of the data, not of the loop (CLP02, the claim
    status; SBR01 in every 2320; ADX02, the adjustment reason), and a match on it would only
    refuse codes the guide happens to leave out."""
    variants = {}
    for opener in loop_openers(structure):
        for path, (codes, _) in qualifiers(opener).items():
            variants.setdefault(opener["segment"], {}).setdefault(path, set()).add(frozenset(codes))
    return {tag: {path for path, lists in paths.items() if any(not a & b for a in lists for b in lists)}
            for tag, paths in variants.items()}


def qualifier_match(opener, qualifier_paths):
    """The match list of a loop opener that no sibling shares its id with: the codes the guide
    allows for this loop on the segment's first required qualifier. A loop whose qualifier is
    situational gets none, since a match on an absent element refuses the segment."""
    lists = qualifiers(opener)
    for path in sorted(qualifier_paths.get(opener["segment"], ())):
        if path in lists and lists[path][1]:
            return [{"path": path, "value": regex_of_codes(lists[path][0])}]
    return None


def hierarchy(children, items):
    """Hierarchical levels that stand side by side (2000A, 2000B, ... in 270, 271 and 277) follow
    each other on the wire in the order of the tree their HL segments describe, not in the order
    of the guide: a second information source comes after the first one's subscribers. They are
    put in one repeating choice, so that any level may follow any other; HL01 and HL02 link them."""
    levels = [i for i, child in enumerate(children) if "loop" in child and opening_segment(child)["segment"] == "HL"]
    if len(levels) < 2 or levels != list(range(levels[0], levels[-1] + 1)):
        return items
    first, last = levels[0], levels[-1]
    group = {"group": "HIERARCHY", "choice": True, "maxRepeats": 0}
    if any(items[i].get("required") for i in levels):
        group["required"] = True
    group["userData"] = {"Name": "Hierarchical levels"}
    group["items"] = items[first:last + 1]
    return items[:first] + [group] + items[last + 1:]


class TransactionBuilder:
    """Turns the structure of one transaction set into message items."""

    def __init__(self, segments, tables, dictionary):
        self.segments = segments
        self.tables = tables
        self.dictionary = dictionary
        self.qualifier_paths = {}

    def transaction_items(self, structure):
        self.qualifier_paths = opener_qualifiers(structure)
        return self.items(structure)

    def items(self, children, opens_loop=False):
        matches = sibling_matches(children)
        for index, child in enumerate(children):
            if "loop" in child and index not in matches:
                own = qualifier_match(opening_segment(child), self.qualifier_paths)
                if own:
                    matches[index] = own
        names = {}
        result = []
        for index, child in enumerate(children):
            if "segment" in child:
                item = self.segment_item(child, names, opens_loop and index == 0)
            else:
                item = self.loop_item(child)
            if index in matches:
                opener = item if "segment" in item else item["items"][0]
                opener["matches"] = matches[index]
            result.append(item)
        return hierarchy(children, result)

    def segment_item(self, segment, names, opens_loop):
        self.segments.note_use(segment)
        tag = segment["segment"]
        # Items of one segment in one loop get ":2", ":3" behind the name, which the engine drops
        # from their key.
        names[tag] = names.get(tag, 0) + 1
        item = {"segment": tag}
        if names[tag] > 1:
            item["name"] = f"{tag}:{names[tag]}"
        # The segment that opens a loop is there whenever the loop is.
        if segment["usage"] == "R" or opens_loop:
            item["required"] = True
        repeat = max_repeats(segment["repeat"])
        if repeat != 1:
            item["maxRepeats"] = repeat
        overrides = {}
        for position, element in enumerate(segment["elements"], 1):
            entry = element_override(element, self.tables, self.dictionary)
            if entry:
                overrides[f"{tag}{position:02d}"] = entry
        if overrides:
            item["overrides"] = overrides
        item["userData"] = {"Name": segment["name"]}
        return item

    def loop_item(self, loop):
        item = {"group": loop["loop"]}
        if loop["usage"] == "R":
            item["required"] = True
        repeat = max_repeats(loop["repeat"])
        if repeat != 1:
            item["maxRepeats"] = repeat
        if loop.get("name"):
            item["userData"] = {"Name": loop["name"]}
        item["items"] = self.items(loop["children"], opens_loop=True)
        return item


def trade_structure(dictionary, nodes):
    """The trade tables in the form of the guides' data, so that one builder serves both."""
    result = []
    for node in nodes:
        if len(node) == 4:
            loop, requirement, repeat, children = node
            result.append({"loop": loop, "usage": "R" if requirement == "M" else "S", "repeat": repeat,
                           "children": trade_structure(dictionary, children)})
            continue
        tag, requirement, repeat = node
        name, layout = TRADE_SEGMENTS[tag]
        elements = []
        for position, entry in enumerate(layout.split(", "), 1):
            number, need = entry.split()
            element = {"ref": f"{tag}{position:02d}", "usage": "R" if need == "M" else "S"}
            element["composite" if number.startswith("C") else "element"] = number
            elements.append(element)
        result.append({"segment": tag, "name": name, "usage": "R" if requirement == "M" else "S",
                       "repeat": repeat, "elements": elements})
    return result


def widen_group_codes(gs, transactions, version):
    """GS01 and GS08 of the control data list the guides it knew; the groups here may carry every
    transaction set of the file, so each one's functional identifier and version code is added."""
    extra = {"GS01": [], "GS08": [version]}
    for data in transactions:
        if data["id"] in TRADE_FUNCTIONAL_IDS:
            extra["GS01"].append(TRADE_FUNCTIONAL_IDS[data["id"]])
        elif data.get("functional_id"):
            extra["GS01"].append(data["functional_id"])
        else:
            extra["GS01"] += data.get("gs01") or []
        extra["GS08"] += [data["guide"]] if data.get("guide") else []
    for element in gs["elements"]:
        if element["ref"] in extra and "codes" in element:
            element["codes"] = element["codes"] + [c for c in dict.fromkeys(extra[element["ref"]])
                                                   if c and c not in element["codes"]]


def envelope_sets(dictionary, envelope, version, inner_name, external, transactions):
    """The interchange set of one version: ISA, TA1, GS, the embedded transaction sets, GE, IEA."""
    isa_loop = envelope["structure"][0]
    tables = TableBook(external)
    segments = SegmentBook(dictionary)
    builder = TransactionBuilder(segments, tables, dictionary)
    children = {(c.get("segment") or c.get("loop")): c for c in isa_loop["children"]}
    gs_loop = children["GS_LOOP"]
    gs, ge = gs_loop["children"][0], gs_loop["children"][-1]
    widen_group_codes(gs, transactions, version)
    embed = gs_loop["children"][1]
    assert "embed" in embed
    isa = builder.segment_item(children["ISA"], {}, True)
    # TA1 stands after ISA and before the first group on the wire, whatever place the data gives it.
    ta1 = builder.segment_item(children["TA1"], {}, False)
    ta1["maxRepeats"] = 0
    group = {"group": "GS_LOOP", "required": True, "maxRepeats": 0, "userData": {"Name": "Functional Group"},
             "items": [builder.segment_item(gs, {}, True),
                       {"embeddedSet": inner_name, "name": "TRANSACTION", "required": True, "maxRepeats": 0,
                        "userData": {"Name": embed["name"]}},
                       builder.segment_item(ge, {}, True)]}
    iea = builder.segment_item(children["IEA"], {}, True)
    composites, segment_defs = segments.definitions()
    # ISA12 tells the interchange sets of the versions apart before anything else is known.
    isa_def = next(s for s in segment_defs if s["name"] == "ISA")
    isa_def["matches"] = [{"path": "ISA12", "value": regex_of_codes(envelope["isa12"])}]
    # The ISA elements have fixed widths, and the separators stand in fixed places: the element
    # separator right behind the tag, the repetition separator (from 00501) in ISA11, the component
    # separator in ISA16, and the segment terminator right behind ISA16.
    separators = {
        "segment": {"value": "~", "style": "terminator", "fromField": "ISA", "position": -1},
        "field1": {"value": "*", "style": "initiator", "fromField": "ISA", "position": 1},
        "field2": {"value": ":", "fromField": "ISA.16", "position": 0},
    }
    if version == "005010":
        separators["repeat"] = {"value": "^", "fromField": "ISA.11", "position": 0}
    return {
        "name": f"X12_{version}_INTERCHANGE",
        # Trailing empty elements are left off on output, as X12 wants.
        "trimSegments": True,
        "separators": separators,
        "validationTables": tables.tables,
        "composites": composites,
        "segments": segment_defs,
        "messages": [{"name": "INTERCHANGE", "userData": {"Name": envelope["name"]},
                      "items": [isa, ta1, group, iea]}],
    }


def transaction_set(dictionary, version, transactions, external):
    """The set of a version's transaction sets, embedded by its interchange set."""
    tables = TableBook(external)
    segments = SegmentBook(dictionary)
    builder = TransactionBuilder(segments, tables, dictionary)
    messages = []
    for data in transactions:
        message = {"name": data["variant"], "type": data["id"]}
        if data.get("guide"):
            message["matches"] = [{"path": "ST/ST03", "value": regex_of_codes([data["guide"]])}]
        user = {"Name": data["name"]}
        if data.get("guide"):
            user["Guide"] = data["guide"]
        message["userData"] = user
        message["items"] = builder.transaction_items(data["structure"])
        messages.append(message)
    composites, segment_defs = segments.definitions()
    return {
        "name": f"X12_{version}",
        # Transaction sets use the separators their interchange read from ISA.
        "initializeSeparatorsFromParent": True,
        "trimSegments": True,
        "separators": {"segment": {"value": "~", "style": "terminator"}, "field1": {"value": "*", "style": "initiator"}, "field2": ":",
                       **({"repeat": "^"} if version == "005010" else {})},
        "messageTypeFields": ["ST/1"],
        "validationTables": tables.tables,
        "composites": composites,
        "segments": segment_defs,
        "messages": messages,
    }


def trade_transactions(dictionary, version):
    result = []
    for set_id in TRADE:
        name, nodes = TRADE_STRUCTURES[set_id]
        result.append({"id": set_id, "variant": set_id, "guide": None, "name": name,
                       "structure": trade_structure(dictionary, nodes)})
    return result


def main(argv):
    if len(argv) not in (2, 3):
        raise SystemExit(__doc__)
    standards = argv[1]
    here = os.path.dirname(os.path.abspath(__file__))
    output = argv[2] if len(argv) == 3 else os.path.join(here, "x12.yaml")
    dictionary = Dictionary(standards)
    external = load(os.path.join(standards, "x12", "codes.json"))["codesets"]
    x12 = os.path.join(standards, "x12")
    hipaa = [load(os.path.join(x12, "005010", f"{name}.json")) for name in HIPAA_005010]
    acks = [load(os.path.join(x12, "004010", "997.json"))]
    sets = []
    sources = set()
    for version, guides in (("005010", hipaa), ("004010", acks)):
        envelope = load(os.path.join(x12, version, "envelope.json"))
        transactions = guides + trade_transactions(dictionary, version)
        sets.append(envelope_sets(dictionary, envelope, version, f"X12_{version}", external, transactions))
        sets.append(transaction_set(dictionary, version, transactions, external))
        for record in [envelope] + guides:
            source = record["source"]
            for s in (source if isinstance(source, list) else [source]):
                sources.add(f"{s['repository']} {s['path']} @ {s['commit'][:12]}")
    document = {
        "version": 883,
        "userData": {"Name": "Vantrelia X12 definitions",
                     "Contents": "X12 005010 HIPAA guides 270 271 277 277CA 820 834 835 837P 837I 999, "
                                 "004010 997, 850 810 855 856 at 004010 and 005010"},
        "messageSets": sets,
    }
    header = [
        "Generated by standards/x12/generate.py; do not edit by hand.",
        "Source: the X12 structure data of the shared standards folder (x12/elements.json, x12/codes.json,",
        "x12/005010/*.json, x12/004010/*.json), converted from these maps (BSD licence, see LICENSE-pyx12.txt):",
    ] + [f"  {s}" for s in sorted(sources)] + [
        "850, 810, 855 and 856: main loops and segments of the published X12 transaction set tables,",
        "written in the generator.",
        "",
    ]
    with open(output, "w", encoding="utf-8") as f:
        f.write(definition_yaml.dump(document, header))


if __name__ == "__main__":
    main(sys.argv)

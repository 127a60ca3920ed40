#!/usr/bin/env python3
"""Checks a sample project: python3 Data/check_project.py [folder].

Reads project.json, components.json and change-1.json, change-2.json ... of the folder, applies the changes one after
the other and checks the state after each: keys and their types, unique ids and names, references, figures.
Prints the rows of each table and each fault; the exit code is 1 if there is a fault.
"""
import json
import re
import sys
import uuid
from pathlib import Path

TEXT, WHOLE, REAL, LIST = "text", "whole number", "number with a point", "list"
KINDS = {TEXT: str, WHOLE: int, REAL: float, LIST: list}

NODE_KEYS = {"ID": TEXT, "text": TEXT, "groupName": TEXT, "CreateTime": WHOLE, "nodeID": TEXT, "tableName": TEXT,
             "order": WHOLE, "display": WHOLE, "Nodes": TEXT, "Children": TEXT, "parentID": TEXT}
SYSTEM_KEYS = {"ID": TEXT, "code": TEXT, "description": TEXT, "systemType": TEXT, "systemCategory": WHOLE,
               "CreateTime": WHOLE}
SERIES_KEYS = {"ID": TEXT, "name": TEXT, "CreateTime": WHOLE, "connective": WHOLE}
ROUTED_KEYS = {**SERIES_KEYS, "minSize": REAL, "maxSize": REAL, "preferredConnect": WHOLE, "PipeSegmentId": TEXT,
               "parentID": TEXT}
FITTING_KEYS = {"id": TEXT, "version": WHOLE, "categoryCode": TEXT, "FittingPartType": WHOLE, "min": REAL, "max": REAL,
                "publicComponentId": TEXT}
TEMPLATE_KEYS = {"ID": TEXT, "SystemClassification": WHOLE, "SystemTypeId": TEXT, "SwitchComponentId1": TEXT,
                 "SwitchComponentId2": TEXT, "SwitchComponentId3": TEXT, "SwitchComponentType1": TEXT,
                 "SwitchComponentType2": TEXT, "SwitchComponentType3": TEXT, "Phase": WHOLE,
                 "ProtectionMaterial": TEXT, "WireType": TEXT, "WireSize": REAL, "WireSpec": TEXT,
                 "WireCountStr": TEXT, "ConduitType": TEXT, "ConduitSizeDN": WHOLE, "IsApply": WHOLE,
                 "LayingMode": TEXT, "DescriptionCHN": TEXT}
LIST_FORM_KEYS = {"ID": TEXT, "Name": TEXT, "Spacing": WHOLE, "List": LIST}
EQUIPMENT_FORM_KEYS = {"ID": TEXT, "Name": TEXT, "EquipmentComponentId": TEXT, "EquipmentComponentTypeId": TEXT,
                       "EquipmentCategoryStandardCode": TEXT, "SupplyAirTerminalComponentId": TEXT,
                       "SupplyAirTerminalComponentTypeId": TEXT, "AirTerminalCategoryStandardCode": TEXT,
                       "ReturnAirTerminalComponentId": TEXT, "ReturnAirTerminalComponentTypeId": TEXT,
                       "SupplySystemTypeId": TEXT, "SupplyAirTerminalDist1": REAL, "SupplyAirTerminalDist2": REAL,
                       "SupplyAirTerminalNumber": WHOLE, "SupplyDuctTypeId": TEXT, "SupplyHoseLength": REAL,
                       "ReturnSystemTypeId": TEXT, "ReturnDuctTypeId": TEXT, "ReturnHoseLength": REAL}
ENTRY_KEYS = {
    "MaterialSeries": {"DN": REAL, "OD": REAL, "ID": REAL, "Thickness": REAL},
    "HVACMaterialSeries": {"DN": REAL, "OD": REAL, "ID": REAL, "Thickness": REAL},
    "ductSeriesType": {"Size": REAL, "Thickness": REAL},
    "cableTray": {"Size": REAL},
    "electricLinePipe": {"DN": WHOLE, "OD": REAL, "ID": REAL},
    "electricWireType": {"area": TEXT, "current": WHOLE, "temperature": WHOLE},
}
CONTENT_KEYS = {
    "MaterialSeries": {"roughness": REAL, "source": TEXT, "sizeList": LIST},
    "HVACMaterialSeries": {"roughness": REAL, "source": TEXT, "sizeList": LIST},
    "ductSeriesType": {"shape": WHOLE, "series": TEXT, "systemPress": WHOLE, "source": TEXT, "sizeList": LIST},
    "cableTray": {"type": WHOLE, "source": TEXT, "sizeList": LIST},
    "electricLinePipe": {"source": TEXT, "sizeList": LIST},
    "electricWireType": {"series": WHOLE, "currentUseTemperature": WHOLE, "source": TEXT, "sizeList": LIST},
}
PIPE_GROUPS = ("MaterialSeries", "HVACMaterialSeries")
SERIES_GROUPS = ("pipeFittingGroup", "havcFittingGroup", "ductFittingGroup")
# Table: groups of its size tables, group of its series groups, system-type table that links to it.
SERIES = {
    "PipeType": ("MaterialSeries", "pipeFittingGroup"),
    "HVACPipeType": ("HVACMaterialSeries", "havcFittingGroup"),
    "DuctType": ("ductSeriesType", "ductFittingGroup"),
    "ConduitFittingsType": ("electricLinePipe", None),
    "CableTrayFittingsType": ("cableTray", None),
}
SYSTEMS = {"PipeSystemType": "PipeType", "HVACPipeSystemType": "HVACPipeType", "DuctSystemType": "DuctType",
           "ElectricalSystemType": None}
CONNECTIVES = {"PipeType": range(1, 6), "HVACPipeType": range(1, 6), "DuctType": (11,), "ConduitFittingsType": (31,),
               "CableTrayFittingsType": (21,)}
ROUTED_RULES = {"Elbow": 1, "Tee": 2, "Cross": 3, "Transition": 4, "Union": 5, "Cap": 6}
RULES = {
    "PipeType": ROUTED_RULES,
    "HVACPipeType": ROUTED_RULES,
    "DuctType": {**ROUTED_RULES, "Round": 11, "Duct": None},
    "ConduitFittingsType": {"Bend": 1, "Tee": 2, "Cross": 3, "Transition": 4, "Union": 5, "Conduit": None},
    "CableTrayFittingsType": {"HorizontalBend": 1, "HorizontalTee": 2, "Cross": 3, "Transition": 4, "Union": 5,
                              "VerticalInsideBend": 21, "VerticalOutsideBend": 22, "VerticalLateralTee": 23,
                              "VerticalLateralElbow": 24, "VerticalLeftLateralElbow": 26,
                              "VerticalRightLateralElbow": 27, "VerticalDownwardTee": 28, "VerticalUpTee": 29,
                              "VerticalTee": None},
}
LIST_CODES = ("16353515", "16302510")
EQUIPMENT_CODES = ("16352020", "16352030")
TABLES = ["ConfigTree", *SYSTEMS, *SERIES, "CircuitTemplate",
          *("Combination_" + code for code in LIST_CODES + EQUIPMENT_CODES), "BinaryTable"]
MAX_ENTRIES = 300


class Checker:
    def __init__(self, folder):
        self.folder = folder
        self.faults = []
        self.where = ""

    def fault(self, words):
        self.faults.append(f"{self.where}: {words}")

    def expect(self, right, words):
        if not right:
            self.fault(words)
        return right

    def keys(self, row, wanted, what):
        for key, kind in wanted.items():
            value = row.get(key)
            self.expect(isinstance(value, KINDS[kind]) and not isinstance(value, bool),
                        f"{what}: \"{key}\" is no {kind}: {value!r}")

    def no_other_keys(self, row, wanted, what):
        for key in row.keys() - set(wanted):
            self.fault(f"{what}: unknown key \"{key}\"")

    def unique(self, names, what):
        seen = set()
        for name in names:
            self.expect(name not in seen, f"{what} stands twice: {name}")
            self.expect(name, f"{what} is empty")
            seen.add(name)


def row_id(table, row):
    return row["fileName"] if table == "BinaryTable" else row["ID"]


def is_guid(text):
    try:
        return str(uuid.UUID(text)) == text
    except ValueError:
        return False


# --- component database -----------------------------------------------------------------------------------------------

def check_components(c, database):
    c.where = "components.json"
    disciplines = [d["id"] for d in database["disciplines"]]
    categories = {x["code"]: x for x in database["categories"]}
    c.unique(disciplines, "discipline")
    c.unique([x["code"] for x in database["categories"]], "category")
    for x in categories.values():
        c.expect(x["disciplineId"] in disciplines, f"category {x['code']}: no discipline {x['disciplineId']}")
        c.expect(not x["parentCode"] or x["parentCode"] in categories, f"category {x['code']}: no parent")
        c.expect(x["name"] and x["englishName"], f"category {x['code']}: no name")
        c.expect(len(x["code"].encode()) <= 50, f"category {x['code']}: code is too long")
    for code in LIST_CODES + EQUIPMENT_CODES:
        c.expect(code in categories, f"no category {code}")
    for key in ("id", "name", "publicId", "productId"):
        c.unique([str(x[key]) for x in database["components"]], f"component {key}")
    for x in database["components"]:
        c.expect(is_guid(x["id"]) and is_guid(x["componentTypeId"]), f"component {x['name']}: an id is no GUID")
        c.expect(x["categoryCode"] in categories, f"component {x['name']}: no category {x['categoryCode']}")
        c.expect(isinstance(x["version"], int) and x["version"] > 0, f"component {x['name']}: version")
        c.expect(all(isinstance(v, str) for v in x["attributes"].values()), f"component {x['name']}: attributes")
    return categories, {x["id"]: x for x in database["components"]}


# --- one state of the project -----------------------------------------------------------------------------------------

class State:
    """The rows of a project at one point, and the lookups that references need."""

    def __init__(self, tables, categories, components):
        self.tables = tables
        self.categories = categories
        self.components = components
        self.by_id = {t: {row_id(t, r): r for r in rows} for t, rows in tables.items()}

    def nodes(self, group, with_parent=None):
        rows = {r["ID"]: r for r in self.tables["ConfigTree"] if r["groupName"] == group}
        if with_parent is None:
            return rows
        return {i: r for i, r in rows.items() if bool(r["parentID"]) == with_parent}

    def size_tables(self, group):
        return self.nodes(group, True) if group in PIPE_GROUPS else self.nodes(group)


def rising(values):
    return all(a < b for a, b in zip(values, values[1:]))


def check_pipe_entries(c, entries, what):
    c.expect(rising([e["DN"] for e in entries]), f"{what}: DN do not rise")
    for e in entries:
        c.expect(0 < e["ID"] < e["OD"], f"{what}: DN {e['DN']}: ID is not below OD")
        if "Thickness" in e:
            c.expect(abs(e["OD"] - 2 * e["Thickness"] - e["ID"]) < 0.1, f"{what}: DN {e['DN']}: ID is not OD - 2 t")
            c.expect(0.01 < e["Thickness"] / e["OD"] < 0.25, f"{what}: DN {e['DN']}: odd thickness")
        c.expect(0.6 < e["DN"] / e["OD"] <= 1.1, f"{what}: DN {e['DN']} does not fit OD {e['OD']}")


def check_plate_entries(c, entries, what):
    c.expect(rising([e["Size"] for e in entries]), f"{what}: sizes do not rise")
    thicknesses = [e["Thickness"] for e in entries if "Thickness" in e]
    c.expect(thicknesses == sorted(thicknesses), f"{what}: thicknesses fall")
    c.expect(all(0.4 <= t <= 10 for t in thicknesses), f"{what}: odd thickness")


def check_wire_entries(c, entries, what):
    areas = list(dict.fromkeys(e["area"] for e in entries))
    current = {(e["area"], e["temperature"]): e["current"] for e in entries}
    c.expect(len(current) == len(entries) == 4 * len(areas), f"{what}: not four temperatures for each area")
    c.expect(rising([float(a) for a in areas]), f"{what}: areas do not rise")
    c.expect(all(len(a.encode()) < 50 for a in areas), f"{what}: an area is too long")
    for area in areas:
        row = [current.get((area, t), 0) for t in range(4)]
        c.expect(row == sorted(row, reverse=True) and row[0] > row[3],
                 f"{what}: {area} mm2: the current does not fall with the temperature")
    for t in range(4):
        c.expect(rising([current.get((a, t), 0) for a in areas]), f"{what}: currents do not rise with the area")


def check_content(c, row):
    group, what, content = row["groupName"], row["text"], row["content"]
    c.keys(content, CONTENT_KEYS[group], what)
    c.no_other_keys(content, CONTENT_KEYS[group], what)
    entries = content["sizeList"]
    c.expect(0 < len(entries) <= MAX_ENTRIES, f"{what}: {len(entries)} entries")
    for e in entries:
        c.keys(e, ENTRY_KEYS[group], what)
        c.no_other_keys(e, ENTRY_KEYS[group], what)
    if group in PIPE_GROUPS + ("electricLinePipe",):
        check_pipe_entries(c, entries, what)
    elif group == "electricWireType":
        check_wire_entries(c, entries, what)
        c.expect(content["series"] in (0, 1) and content["currentUseTemperature"] in range(4), f"{what}: content")
    else:
        check_plate_entries(c, entries, what)
    if group in PIPE_GROUPS:
        rough = content["roughness"]
        c.expect(0 < rough < 1 and int(rough * 10000.0) / 10000.0 == rough, f"{what}: roughness {rough}")
    if group == "ductSeriesType":
        c.expect(content["shape"] in (0, 1) and content["systemPress"] in range(4), f"{what}: content")
    if group == "cableTray":
        c.expect(content["type"] in range(4), f"{what}: type")


def check_config_tree(c, state):
    for row in state.tables["ConfigTree"]:
        group, what = row["groupName"], row["text"]
        c.keys(row, NODE_KEYS, what)
        c.no_other_keys(row, [*NODE_KEYS, "content"], what)
        c.expect((row["Nodes"], row["Children"], row["nodeID"], row["tableName"], row["order"], row["display"])
                 == ("[]", "[]", "", "", 0, 1), f"{what}: a fixed key differs")
        if group in SERIES_GROUPS or (group in PIPE_GROUPS and not row["parentID"]):
            c.expect(row["content"] == {} and not row["parentID"], f"{what}: content of a material or group")
        elif c.expect(group in CONTENT_KEYS, f"{what}: no group {group}"):
            if group in PIPE_GROUPS:
                c.expect(row["parentID"] in state.nodes(group, False), f"{what}: no material {row['parentID']}")
            else:
                c.expect(not row["parentID"], f"{what}: has a parent")
            check_content(c, row)
    for group in (*CONTENT_KEYS, *SERIES_GROUPS):
        parts = (False, True) if group in PIPE_GROUPS else (None,)
        for part in parts:
            c.unique([r["text"] for r in state.nodes(group, part).values()], f"name in {group}")


def check_fitting(c, state, fitting, rule, what):
    c.keys(fitting, FITTING_KEYS, what)
    c.no_other_keys(fitting, FITTING_KEYS, what)
    c.expect(fitting["FittingPartType"] == rule, f"{what}: fitting part type {fitting['FittingPartType']}")
    c.expect(0 <= fitting["min"] <= fitting["max"], f"{what}: bounds")
    component = state.components.get(fitting["id"])
    if c.expect(component, f"{what}: no component {fitting['id']}"):
        same = (component["categoryCode"], component["version"], str(component["publicId"]))
        c.expect(same == (fitting["categoryCode"], fitting["version"], fitting["publicComponentId"]),
                 f"{what}: a fitting differs from its component")


def check_size_link(c, state, table, row):
    group, series_group = SERIES[table]
    what, sizes = row["name"], state.size_tables(group)
    if table == "CableTrayFittingsType":
        c.keys(row, {"type": WHOLE}, what)
        matches = [r for r in sizes.values() if r["content"]["type"] == row["type"]]
        c.expect(len(matches) == 1, f"{what}: {len(matches)} tray tables of type {row['type']}")
    elif table == "ConduitFittingsType":
        c.expect(row["parentID"] in sizes, f"{what}: no size table {row['parentID']}")
    else:
        c.expect(row["PipeSegmentId"] in sizes, f"{what}: no size table {row['PipeSegmentId']}")
        c.expect(row["parentID"] in state.nodes(series_group), f"{what}: no group {row['parentID']}")
        c.expect(0 < row["minSize"] <= row["maxSize"], f"{what}: size range")
        if row["PipeSegmentId"] in sizes:
            entries = sizes[row["PipeSegmentId"]]["content"]["sizeList"]
            listed = [e.get("DN", e.get("Size")) for e in entries]
            c.expect(row["minSize"] in listed and row["maxSize"] in listed, f"{what}: a bound is no listed size")


def check_series(c, state):
    for table, rules in RULES.items():
        plain = ROUTED_KEYS if SERIES[table][1] else SERIES_KEYS
        extra = [] if SERIES[table][1] else ["type" if table == "CableTrayFittingsType" else "parentID"]
        c.unique([r["name"] for r in state.tables[table]], f"name in {table}")
        for row in state.tables[table]:
            c.keys(row, {**plain, **dict.fromkeys(rules, LIST)}, row["name"])
            c.no_other_keys(row, [*plain, *extra, *rules], row["name"])
            c.expect(row["connective"] in CONNECTIVES[table], f"{row['name']}: connective {row['connective']}")
            check_size_link(c, state, table, row)
            fittings = [(f, rule) for key, rule in rules.items() for f in row[key]]
            c.expect(fittings and len(fittings) <= MAX_ENTRIES, f"{row['name']}: {len(fittings)} fittings")
            for fitting, rule in fittings:
                check_fitting(c, state, fitting, rule, row["name"])
            # A stored series reads its fittings from one category only.
            c.expect(len({f["categoryCode"] for f, _ in fittings}) == 1, f"{row['name']}: fittings of two categories")


def check_systems(c, state):
    for table, series in SYSTEMS.items():
        key = "fittingIds" if series else "bindIDs"
        targets = state.by_id[series] if series else state.nodes("electricWireType")
        c.unique([r["systemType"] for r in state.tables[table]], f"name in {table}")
        c.unique([r["code"] for r in state.tables[table]], f"code in {table}")
        for row in state.tables[table]:
            c.keys(row, {**SYSTEM_KEYS, key: LIST}, row["systemType"])
            c.no_other_keys(row, [*SYSTEM_KEYS, key], row["systemType"])
            c.expect(row[key], f"{row['systemType']}: no links")
            c.unique(row[key], f"{row['systemType']}: link")
            for target in row[key]:
                c.expect(target in targets, f"{row['systemType']}: no {target}")


def check_templates(c, state):
    wires, conduits = state.nodes("electricWireType"), state.nodes("electricLinePipe")
    for row in state.tables["CircuitTemplate"]:
        what = "circuit template " + row["ID"]
        c.keys(row, TEMPLATE_KEYS, what)
        c.no_other_keys(row, TEMPLATE_KEYS, what)
        system = state.by_id["ElectricalSystemType"].get(row["SystemTypeId"])
        if c.expect(system, f"{what}: no system type"):
            c.expect((system["systemType"], system["systemCategory"])
                     == (row["DescriptionCHN"], row["SystemClassification"]), f"{what}: differs from its system type")
            c.expect(row["WireType"] in system["bindIDs"], f"{what}: the wire is none of its system type's")
        if c.expect(row["WireType"] in wires, f"{what}: no wire type"):
            areas = {e["area"] for e in wires[row["WireType"]]["content"]["sizeList"]}
            c.expect(row["WireSpec"] in areas, f"{what}: no area {row['WireSpec']}")
        series = state.by_id["ConduitFittingsType"].get(row["ConduitType"])
        if c.expect(series and series["parentID"] in conduits, f"{what}: no conduit type"):
            sizes = {e["DN"] for e in conduits[series["parentID"]]["content"]["sizeList"]}
            c.expect(row["ConduitSizeDN"] in sizes, f"{what}: no conduit size {row['ConduitSizeDN']}")
        for i in "123":
            component = row["SwitchComponentId" + i]
            c.expect(bool(component) == bool(row["SwitchComponentType" + i]), f"{what}: switch {i}")
            c.expect(not component or component in state.components, f"{what}: no component {component}")


def check_reference(c, state, category, component, component_type, what):
    found = state.components.get(component)
    if c.expect(found, f"{what}: no component {component}"):
        c.expect((found["categoryCode"], found["componentTypeId"]) == (category, component_type),
                 f"{what}: a reference differs from its component")


def check_equipment_form(c, state, row, what):
    c.keys(row, EQUIPMENT_FORM_KEYS, what)
    c.no_other_keys(row, EQUIPMENT_FORM_KEYS, what)
    for key, category in (("Equipment", "Equipment"), ("SupplyAirTerminal", "AirTerminal"),
                          ("ReturnAirTerminal", "AirTerminal")):
        check_reference(c, state, row[category + "CategoryStandardCode"], row[key + "ComponentId"],
                        row[key + "ComponentTypeId"], what)
    for side in ("Supply", "Return"):
        c.expect(row[side + "SystemTypeId"] in state.by_id["DuctSystemType"], f"{what}: no {side} system type")
        c.expect(row[side + "DuctTypeId"] in state.by_id["DuctType"], f"{what}: no {side} duct type")
        c.expect(0 < row[side + "HoseLength"] < 5000, f"{what}: odd {side} hose length")
    c.expect(row["SupplyAirTerminalNumber"] > 0, f"{what}: no supply air terminals")


def check_combinations(c, state):
    for code in LIST_CODES + EQUIPMENT_CODES:
        rows = state.tables["Combination_" + code]
        c.expect(rows, f"no combined product of {code}")
        c.unique([r["Name"] for r in rows], f"name in Combination_{code}")
        for row in rows:
            if code in EQUIPMENT_CODES:
                check_equipment_form(c, state, row, row["Name"])
                continue
            c.keys(row, LIST_FORM_KEYS, row["Name"])
            c.no_other_keys(row, LIST_FORM_KEYS, row["Name"])
            c.expect(row["List"] and row["Spacing"] > 0, f"{row['Name']}: nothing in it")
            for part in row["List"]:
                check_reference(c, state, part["CategoryStandardCode"], part["ComponentId"], part["ComponentTypeId"],
                                row["Name"])


def check_files(c, state):
    for row in state.tables["BinaryTable"]:
        c.no_other_keys(row, ("fileName", "file"), row["fileName"])
        c.expect(re.fullmatch(r"[A-Za-z0-9][A-Za-z0-9._-]*", row["fileName"]), f"{row['fileName']}: no plain name")
        path = c.folder / row["file"]
        c.expect(".." not in row["file"] and path.is_file() and path.stat().st_size > 0, f"no file {row['file']}")


def check_state(c, state):
    ids = [i for t, rows in state.tables.items() for i in (row_id(t, r) for r in rows)]
    c.unique(ids, "id")
    for table, rows in state.tables.items():
        for row in rows:
            c.expect(table == "BinaryTable" or is_guid(row["ID"]), f"{table}: {row_id(table, row)} is no GUID")
    for check in (check_config_tree, check_series, check_systems, check_templates, check_combinations, check_files):
        check(c, state)


# --- changes ----------------------------------------------------------------------------------------------------------

def apply_change(c, tables, change):
    """The rows after the change, in the order in which they came."""
    for part in ("add", "edit", "remove"):
        for table in change.get(part, {}):
            c.expect(table in TABLES, f"no table {table}")
    touched = [row_id(t, r) for p in ("add", "edit") for t, rows in change.get(p, {}).items() for r in rows]
    c.unique(touched + [i for ids in change.get("remove", {}).values() for i in ids], "touched id")
    result = {}
    for table in TABLES:
        rows = {row_id(table, r): r for r in tables[table]}
        for row in change.get("add", {}).get(table, []):
            c.expect(row_id(table, row) not in rows, f"{table}: added row stands: {row_id(table, row)}")
            rows[row_id(table, row)] = row
        for row in change.get("edit", {}).get(table, []):
            old = rows.get(row_id(table, row))
            c.expect(old, f"{table}: edited row does not stand: {row_id(table, row)}")
            c.expect(old != row, f"{table}: edit changes nothing: {row_id(table, row)}")
            rows[row_id(table, row)] = row
        for removed in change.get("remove", {}).get(table, []):
            c.expect(rows.pop(removed, None), f"{table}: removed row does not stand: {removed}")
        result[table] = list(rows.values())
    return result


def check_workunits(c, before, change):
    removed = {i for t in SYSTEMS for i in change.get("remove", {}).get(t, [])}
    systems = {r["ID"] for t in SYSTEMS for r in before[t]}
    for workunit, entries in change.get("workunits", {}).items():
        c.expect(workunit and entries, "empty work unit")
        for entry in entries:
            c.expect(entry["dataStatus"] in (0, 1), f"work unit {workunit}: status {entry['dataStatus']}")
            c.expect(entry["dataId"] in systems & removed, f"work unit {workunit}: {entry['dataId']} is not removed")


def counts(tables):
    groups = {}
    for row in tables["ConfigTree"]:
        groups[row["groupName"]] = groups.get(row["groupName"], 0) + 1
    lines = [f"  {t}: {len(rows)}" for t, rows in tables.items()]
    lines[1:1] = [f"    {g}: {n}" for g, n in groups.items()]
    return "\n".join([*lines, f"  in all: {sum(map(len, tables.values()))}"])


def load(path):
    def no_repeated_keys(pairs):
        if len(dict(pairs)) != len(pairs):
            raise ValueError(f"{path}: a key stands twice: {[k for k, _ in pairs]}")
        return dict(pairs)
    return json.loads(path.read_text(encoding="utf-8"), object_pairs_hook=no_repeated_keys)


def main():
    folder = Path(sys.argv[1]) if len(sys.argv) > 1 else Path(__file__).parent / "OfficeTower"
    c = Checker(folder)
    database = load(folder / "components.json")
    categories, components = check_components(c, database)
    print(f"components.json: {len(database['disciplines'])} disciplines, {len(categories)} categories, "
          f"{len(components)} components")
    project = load(folder / "project.json")
    c.where = "project.json"
    c.expect((project["format"], project["formatVersion"]) == ("tolm-project", 1), "format")
    c.expect(set(project["tables"]) == set(TABLES), "the tables are not the known ones")
    tables = project["tables"]
    check_state(c, State(tables, categories, components))
    print("project.json:\n" + counts(tables))
    for path in sorted(folder.glob("change-*.json")):
        c.where = path.name
        change = load(path)
        c.expect((change["format"], change["formatVersion"]) == ("tolm-change", 1), "format")
        check_workunits(c, tables, change)
        tables = apply_change(c, tables, change)
        check_state(c, State(tables, categories, components))
        numbers = ", ".join(f"{p} {sum(map(len, change.get(p, {}).values()))}" for p in ("add", "edit", "remove"))
        print(f"{path.name}: {numbers}; {sum(map(len, tables.values()))} rows after it")
    for words in c.faults:
        print("FAULT " + words)
    print(f"{len(c.faults)} faults")
    return 1 if c.faults else 0


if __name__ == "__main__":
    sys.exit(main())

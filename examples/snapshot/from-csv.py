"""A table of rules as a snapshot: python3 from-csv.py rules.csv | tcamshow ip"""
import csv
import ipaddress
import json
import sys

PROTOCOLS = {"icmp": 1, "tcp": 6, "udp": 17}

with open(sys.argv[1], newline="", encoding="utf-8-sig") as file:
    rules = list(csv.DictReader(file))
print(json.dumps({"type": "snapshot", "version": 1}))
print(json.dumps({"type": "group", "groupId": 1, "name": "acl-in", "availableEntries": 508}))
for rule in rules:
    qualifiers, ranges = {}, {}
    if rule["protocol"] != "any":
        qualifiers["qualifierIpProtocol"] = {"value": PROTOCOLS[rule["protocol"]], "mask": 255}
    for column, name in (("source", "qualifierSrcIp"), ("destination", "qualifierDstIp")):
        if rule[column] != "any":
            prefix = ipaddress.ip_interface(rule[column])
            qualifiers[name] = {"value": str(prefix.ip), "mask": str(prefix.netmask)}
    low, _, high = rule["ports"].partition("-")
    if high:
        ranges["rangeCheckerL4DstPort"] = {"low": int(low), "high": int(high)}
    elif low != "any":
        qualifiers["qualifierL4DstPort"] = {"value": int(low), "mask": 65535}
    print(json.dumps({"type": "entry", "table": "ip", "shadowId": int(rule["id"]), "groupId": 1,
                      "sequence": int(rule["sequence"]), "priority": 4294967295 - int(rule["sequence"]),
                      "feature": "acl-in", "action": rule["action"], "hits": int(rule["hits"]),
                      "counterStatus": 7, "qualifiers": qualifiers, "rangeCheckers": ranges}))

# A list of rules as a snapshot: jq -c -f from-json.jq rules.json | tcamshow ip
def octet: if . >= 8 then 255 elif . <= 0 then 0 else 256 - pow(2; 8 - .) end;
def mask: [. - (0, 8, 16, 24) | octet | tostring] | join(".");
def prefix: split("/") | {value: .[0], mask: (.[1] | tonumber | mask)};

{type: "snapshot", version: 1},
{type: "group", groupId: 1, name: "acl-in", availableEntries: 508},
(.[] | {type: "entry", table: "ip", shadowId: .id, groupId: 1, sequence: (10 * .id),
  priority: (4294967295 - 10 * .id), feature: "acl-in", action, hits, counterStatus: 7,
  qualifiers: ({}
    + if .protocol then {qualifierIpProtocol: {value: .protocol, mask: 255}} else {} end
    + if .source then {qualifierSrcIp: (.source | prefix)} else {} end
    + if .destination then {qualifierDstIp: (.destination | prefix)} else {} end
    + if .port then {qualifierL4DstPort: {value: .port, mask: 65535}} else {} end),
  rangeCheckers: (if .ports then {rangeCheckerL4DstPort: {low: .ports[0], high: .ports[1]}} else {} end)})

# SPDX-License-Identifier: Apache-2.0
"""Switches and ports of a snapshot."""
from __future__ import annotations

import ctypes
from collections.abc import Callable, Iterator
from contextlib import contextmanager
from typing import TYPE_CHECKING, Any, Final, NamedTuple

from qvs import _policy as policy
from qvs import constants, keys, lib, records
from qvs._handle import Handle, list_of, properties_of, stored, text, value_of, walk
from qvs._load import from_text, optional, to_text, word
from qvs.errors import NotFound, check

if TYPE_CHECKING:
    from qvs.snapshot import Snapshot


class Uplink(NamedTuple):
    name: str
    port: str


class Switch(Handle):
    """A switch of a snapshot. An attribute that is a policy is None when nothing is stored and there is no default."""

    __slots__ = ("alias", "class_name", "max_ports", "version")

    mtu = policy.Number("VSDVS_GetMTU", "VSDVS_SetMTU")
    teaming = policy.Whole(
        records.VSDVS_TeamingPolicy, "VSDVS_GetTeamingPolicy", "VSDVS_SetTeamingPolicy", "VSDVS_ClearTeamingPolicy"
    )
    mac_learning = policy.Whole(
        records.VSDVS_MACLearning, "VSDVS_GetMACLearning", "VSDVS_SetMACLearning", "VSDVS_ClearMACLearning"
    )
    learn_static = policy.Flag("VSDVS_GetLearnStatic", "VSDVS_SetLearnStatic", "VSDVS_ClearLearnStatic")
    static_mac_allow = policy.Flag("VSDVS_GetStaticMACAllow", "VSDVS_SetStaticMACAllow", "VSDVS_ClearStaticMACAllow")
    private_vlans = policy.PrivateVlans("VSDVS_GetPrivateVLANMap", "VSDVS_SetPrivateVLANMap", keys.PRIVATE_VLAN_MAP)
    multicast_mode = policy.Number("VSDVS_GetMcastFilterMode", "VSDVS_SetMcastFilterMode", keys.MULTICAST_FILTER)
    multicast_addresses = policy.Addresses(
        "VSDVS_GetMcastUserLegacyEntries", "VSDVS_SetMcastUserLegacyEntries", "VSDVS_ClearMcastUserLegacyEntries"
    )
    receive_filter = policy.Number("VSDVS_GetRCFType", "VSDVS_SetRCFType", keys.RCF_TYPE)
    discovery = policy.Whole(records.Discovery_Param, "Discovery_GetParam", "Discovery_SetParam", keys.DISCOVERY)
    team_check = policy.Whole(
        records.HealthCheck_Deployment,
        "HealthCheck_GetTeamCheckDeploy",
        "HealthCheck_DeployTeamCheck",
        "HealthCheck_ClearTeamCheck",
    )
    vlan_mtu_check = policy.Whole(
        records.HealthCheck_Deployment,
        "HealthCheck_GetVLANMTUCheckDeploy",
        "HealthCheck_DeployVLANMTUCheck",
        "HealthCheck_ClearVLANMTUCheck",
    )
    uplink_mirrors = policy.UplinkMirrors(
        "VSDVS_GetDVMirrorSessions", "VSDVS_SetDVMirrorSessions", "VSDVS_ClearDVMirrorSessions"
    )

    def __init__(self, snapshot: Snapshot, pointer: int) -> None:
        super().__init__(snapshot, pointer, lib.DVS_SwitchId(pointer) or b"")
        self.class_name: Final = to_text(lib.DVS_ClassName(pointer) or b"")
        self.max_ports: Final = lib.DVS_GetMaxPorts(pointer)
        self.version: Final = lib.DVS_Version(pointer)
        found = ctypes.c_void_p()
        status = lib.DVSState_GlobalPropLookup(self._id, from_text(keys.ALIAS), ctypes.byref(found))
        self.alias: Final = text(value_of(found.value)) if status == constants.HYP_OK and found.value else None

    def __repr__(self) -> str:
        return f"<switch {self.alias!r}, identifier {self.id!r}>"

    def __str__(self) -> str:
        return f"switch {self.id if self.alias is None else self.alias!r}"

    @contextmanager
    def _names(self) -> Iterator[tuple[bytes, ...]]:
        """The alias, if it leads to this switch: another one may have it, too, and would be changed instead."""
        with self._object():
            alias = optional(self.alias) or b""
            found = ctypes.create_string_buffer(65)
            check(lib.DVSAliasToSwitchIdAllTypes(alias, found), f"{self}: its alias")
            if found.value != self._id[:63]:
                raise NotFound(constants.HYP_NOT_FOUND, f"{self}: another switch has its alias, identifier {self.id!r}")
            yield (alias,)

    @property
    def portset(self) -> str:
        """The name of the data path on this host, by which functions of qvs.kernel know the switch."""
        name = ctypes.create_string_buffer(129)
        with self._names() as (alias,):
            status = lib.DVSAliasToPortsetName(alias, name)
        check(status, f"{self}: its portset")
        return to_text(name.value)

    @property
    def ports(self) -> list[Port]:
        with self._object() as pointer:
            return [Port(self, port) for port in walk(lib.DVSState_PortForEach, pointer)]

    def port(self, id: str) -> Port:
        with self._object():
            pointer = lib.DVSState_PortFind(self._id, from_text(id))
            if not pointer:
                raise NotFound(constants.HYP_NOT_FOUND, f"{self}: port {id!r}")
            return Port(self, pointer)

    @property
    def properties(self) -> dict[str, bytes]:
        """The global properties in the snapshot."""
        with self._object() as pointer:
            return properties_of(lib.DVSState_GlobalPropForEach, pointer)

    @property
    def host_properties(self) -> dict[str, bytes]:
        """The properties of this host's part of the switch in the snapshot."""
        with self._object() as pointer:
            return properties_of(lib.DVSState_HostPropForEach, pointer)

    def get_property(self, key: str, *, host: bool = False) -> bytes:
        return self._get(lib.DVSHYP_HostPropGet if host else lib.DVSHYP_GlobalPropGet, self._id, from_text(key))

    def set_property(self, key: str, value: bytes | str, *, host: bool = False) -> None:
        function = lib.VSDVS_SetHostProp if host else lib.VSDVS_SetGlobProp
        self._change(function, self._id, (from_text(key),), *stored(value))

    def clear_property(self, key: str, *, host: bool = False) -> None:
        self._change(lib.VSDVS_ClearHostProp if host else lib.VSDVS_ClearGlobProp, self._id, (from_text(key),))

    def _call(self, what: str, function: Callable[..., int], *arguments: Any) -> None:
        with self._names() as names:
            status = function(*names, *arguments)
        check(status, f"{self}{what}")

    def destroy(self) -> None:
        """Destroys the switch with its ports. The snapshot has it until it is loaded again."""
        self._call("", lib.VSDVS_DestroyVSwitch)

    def add_port(self, id: str, connect_id: int = 1) -> None:
        """Adds a port. The snapshot does not have it until it is loaded again."""
        self._call(f": port {id!r}", lib.VSDVS_AddDVPort, from_text(id), word("connect_id", connect_id))

    def add_opaque_port(self, id: str, external_id: str) -> None:
        """Adds a port that is managed from outside, with the identifier of its interface."""
        self._call(f": port {id!r}", lib.VSDVS_AddOpaqueDVPort, from_text(id), from_text(external_id))

    def remove_port(self, id: str) -> None:
        self._call(f": port {id!r}", lib.VSDVS_RemoveDVPort, from_text(id))

    @property
    def uplinks(self) -> list[Uplink]:
        """The uplinks and the ports that carry them on this host."""
        names, ports = ctypes.c_void_p(), ctypes.c_void_p()
        with self._names() as (alias,):
            status = lib.VSDVS_GetSwitchUplinkPorts(alias, ctypes.byref(names), ctypes.byref(ports))
        try:
            if status == constants.HYP_NOT_FOUND:
                return []  # nothing is stored
            check(status, f"{self}: uplinks")
            # Both lists have the same count; the library compares them.
            both = zip(list_of(names, records.VSDVS_UplinkName), list_of(ports, records.VSDVS_UplinkPort))
            return [Uplink(name.name, port.portId) for name, port in both]
        finally:
            for pointer in (names, ports):
                if pointer.value:
                    lib.VSDVS_FreeMemory(pointer)

    def add_uplink(self, name: str) -> None:
        if len(from_text(name)) > 47:
            raise ValueError(f"uplink {name!r}: the library keeps 47 bytes of a name, and could not read the uplinks")
        self._call(f": uplink {name!r}", lib.VSDVS_AddSwitchUplinkPort, from_text(name))

    def remove_uplink(self, port: str) -> None:
        """Removes the uplink that a port carries."""
        self._call(f": uplink {port!r}", lib.VSDVS_RemoveSwitchUplinkPort, from_text(port))

    def dump(self) -> str:
        with self._names():
            return self._snapshot.dump(self.alias)


class Port(Handle):
    """A port of a switch. An attribute that is a policy is None when nothing is stored and there is no default."""

    __slots__ = ("switch",)

    vlan = policy.VlanPolicy("VSDVS_GetPortVLANPolicy", "VSDVS_SetPortVLANPolicy", "VSDVS_ClearPortVLANPolicy")
    nested_tagging = policy.Flag(
        "VSDVS_GetPortNestedVLANTagging", "VSDVS_SetPortNestedVLANTagging", keys.PORT_NESTED_TAG
    )
    security = policy.Mask("VSDVS_GetPortSecurity", "VSDVS_SetPortSecurity", keys.PORT_SECURITY)
    filter = policy.Whole(
        records.VSDVS_ExtraEthFilter, "VSDVS_GetExtraEthFilter", "VSDVS_SetExtraEthFilter", "VSDVS_ClearExtraEthFilter"
    )
    sink = policy.Flag("VSDVS_IsSinkPortEnabled", "VSDVS_ConfigureSinkPort")
    teaming = policy.Whole(
        records.VSDVS_TeamingPolicy,
        "VSDVS_GetPortTeamingPolicy",
        "VSDVS_SetPortTeamingPolicy",
        "VSDVS_ClearPortTeamingPolicy",
    )
    teaming_override = policy.Name(
        constants.VSDVS_TEAMING_OVERRIDE_SIZE,
        "VSDVS_GetPortTeamingOverride",
        "VSDVS_SetPortTeamingOverride",
        "VSDVS_ClearPortTeamingOverride",
    )
    ls_teaming = policy.Name(
        constants.VSDVS_LS_TEAMING_NAME_SIZE,
        "VSDVS_GetPortLSTeamingPolicyName",
        "VSDVS_SetPortLSTeamingPolicy",
        "VSDVS_ClearPortLSTeamingPolicy",
    )
    tx_uplink_always = policy.Flag("VSDVS_GetTxUplinkAlways", "VSDVS_SetTxUplinkAlways", keys.PORT_TX_UPLINK)
    mac_learning = policy.Whole(
        records.VSDVS_PortMACLearning, "VSDVS_GetPortMACLearning", "VSDVS_SetPortMACLearning", keys.PORT_MAC_MANAGEMENT
    )
    multicast_addresses = policy.Addresses(
        "VSDVS_GetPortMcastUserLegacyEntries",
        "VSDVS_SetPortMcastUserLegacyEntries",
        "VSDVS_ClearPortMcastUserLegacyEntries",
    )
    mirrors = policy.MirrorPolicy(
        "VSDVS_GetDVMirrorSessions", "VSDVS_SetDVMirrorSessions", "VSDVS_ClearDVMirrorSessions"
    )
    ipfix = policy.IpfixPolicy("IPFIXDVS_GetIpfixGranular", "IPFIXDVS_SetIpfixGranular", keys.PORT_IPFIX)
    status = policy.Known(records.QVS_PortStatus, keys.PORT_STATUS)
    statistics = policy.Known(records.QVS_PortStatistics, keys.PORT_STATISTICS)
    link_status = policy.Known(records.QVS_LinkStatus, keys.PORT_LINK_STATUS)
    shaper_input = policy.Stored(records.QVS_Shaper, keys.PORT_SHAPER_INPUT)
    shaper_output = policy.Stored(records.QVS_Shaper, keys.PORT_SHAPER_OUTPUT)

    def __init__(self, switch: Switch, pointer: int) -> None:
        super().__init__(switch._snapshot, pointer, switch._id, lib.DVS_PortId(pointer) or b"")
        self.switch: Final = switch

    def __repr__(self) -> str:
        return f"<port {self.id!r} of {self.switch}>"

    def __str__(self) -> str:
        return f"{self.switch}: port {self.id!r}"

    @contextmanager
    def _names(self) -> Iterator[tuple[bytes, ...]]:
        with self.switch._names() as names:
            yield (*names, self._id)

    @property
    def alias(self) -> str | None:
        """The readable name in the snapshot."""
        alias = self.properties.get(keys.PORT_ALIAS)
        return None if alias is None else text(alias)

    @property
    def number(self) -> int:
        """The number that the kernel gave the port."""
        number = ctypes.c_uint32()
        with self._object():
            status = lib.VSDVS_DvPortIDToPortIDFromDVSID(self.switch._id, self._id, ctypes.byref(number))
        check(status, f"{self}: its number")
        return number.value

    @property
    def state(self) -> int:
        """constants.DVS_PORT_...; live, if the state library does not tell."""
        with self._object() as pointer:
            try:
                return lib.DVS_PortState(pointer)
            except AttributeError:
                return constants.DVS_PORT_LIVE

    @property
    def properties(self) -> dict[str, bytes]:
        """The properties in the snapshot."""
        with self._object() as pointer:
            return properties_of(lib.DVSState_PortDataForEach, pointer)

    def get_property(self, key: str) -> bytes:
        return self._get(lib.DVSHYP_PortDataGet, self.switch._id, self._id, from_text(key))

    def set_property(self, key: str, value: bytes | str) -> None:
        self._change(lib.VSDVS_SetPortProp, self.switch._id, (self._id, from_text(key)), *stored(value))

    def clear_property(self, key: str) -> None:
        self._change(lib.VSDVS_ClearPortProp, self.switch._id, (self._id, from_text(key)))

    def remove(self) -> None:
        """Removes the port. The snapshot has it until it is loaded again."""
        with self._object():
            self.switch.remove_port(self.id)

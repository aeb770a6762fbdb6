# SPDX-License-Identifier: Apache-2.0
# Written by scripts/checks/python-module --update from src/abi.txt and config/abi.txt: do not edit.
"""The records of the C headers as dataclasses.

bytes(record) are the bytes that the library and the kernel store, from_bytes() reads them.
Of each field the offset and the size stand here, and the number of elements of an array. A
list with fewer elements, such as the empty one of the default, is filled up with zeros.
What follows the NUL of a text is not kept.
"""

from dataclasses import dataclass

from qvs._record import Record, nested, raw, signed, text, unsigned


@dataclass
class Discovery_Param(Record, size=2):
    protocol: int = unsigned(0, 1)
    operation: int = unsigned(1, 1)


@dataclass
class HealthCheck_Deployment(Record, size=5):
    enabled: int = unsigned(0, 1)
    intervalMinutes: int = unsigned(1, 4)


@dataclass
class HealthCheck_Range(Record, size=4):
    first: int = unsigned(0, 2)
    last: int = unsigned(2, 2)


@dataclass
class HealthCheck_Result(Record, size=4):
    firstCount: int = unsigned(0, 2)
    secondCount: int = unsigned(2, 2)


@dataclass
class IPFIXDVS_Collector(Record, size=20):
    address: bytes = raw(0, 16)
    port: int = unsigned(16, 2)
    isIPv6: int = unsigned(18, 1)
    reserved: int = unsigned(19, 1)


@dataclass
class QVS_HostStatus(Record, size=4):
    health: int = unsigned(0, 4)


@dataclass
class QVS_Lag(Record, size=93):
    name: str = text(0, 65)
    key: str = text(65, 16)
    mode: int = unsigned(81, 4)
    loadBalance: int = unsigned(85, 4)
    portNumber: int = signed(89, 4)


@dataclass
class QVS_LinkStatus(Record, size=4):
    up: int = unsigned(0, 1)
    reserved: int = unsigned(1, 1)
    speed: int = unsigned(2, 2)


@dataclass
class QVS_ListHead(Record, size=4):
    count: int = unsigned(0, 4)


@dataclass
class QVS_Overlay(Record, size=36):
    number: int = unsigned(0, 4)
    name: str = text(4, 32)


@dataclass
class QVS_PassThroughStatus(Record, size=16):
    flags: int = unsigned(0, 8)
    reason: int = unsigned(8, 8)


@dataclass
class QVS_PortLacp(Record, size=8):
    status: int = unsigned(0, 4)
    mode: int = unsigned(4, 4)


@dataclass
class QVS_PortOverlay(Record, size=12):
    number: int = unsigned(0, 4)
    value: int = unsigned(4, 8)


@dataclass
class QVS_PortStatistics(Record, size=128):
    pktsInUnicast: int = unsigned(0, 8)
    bytesInUnicast: int = unsigned(8, 8)
    pktsInMulticast: int = unsigned(16, 8)
    bytesInMulticast: int = unsigned(24, 8)
    pktsInBroadcast: int = unsigned(32, 8)
    bytesInBroadcast: int = unsigned(40, 8)
    pktsOutUnicast: int = unsigned(48, 8)
    bytesOutUnicast: int = unsigned(56, 8)
    pktsOutMulticast: int = unsigned(64, 8)
    bytesOutMulticast: int = unsigned(72, 8)
    pktsOutBroadcast: int = unsigned(80, 8)
    bytesOutBroadcast: int = unsigned(88, 8)
    pktsInDropped: int = unsigned(96, 8)
    pktsOutDropped: int = unsigned(104, 8)
    pktsInException: int = unsigned(112, 8)
    pktsOutException: int = unsigned(120, 8)


@dataclass
class QVS_PortStatus(Record, size=20):
    flags: int = unsigned(0, 8)
    reserved: bytes = raw(8, 8)
    portNumber: int = unsigned(16, 4)


@dataclass
class QVS_Shaper(Record, size=24):
    averageBandwidth: int = unsigned(0, 8)
    peakBandwidth: int = unsigned(8, 8)
    burstSize: int = unsigned(16, 8)


@dataclass
class QVS_SwitchIpfix(Record, size=36):
    idleTimeout: int = unsigned(0, 4)
    activeTimeout: int = unsigned(4, 4)
    address: bytes = raw(8, 16)
    port: int = unsigned(24, 2)
    samplingRate: int = unsigned(26, 4)
    internalFlowsOnly: int = unsigned(30, 1)
    isIPv6: int = unsigned(31, 1)
    obsDomainID: int = unsigned(32, 4)


@dataclass
class QVS_VLANInForce(Record, size=4):
    vlan: int = unsigned(0, 2)
    rangeCount: int = unsigned(2, 2)


@dataclass
class VSDVS_ExtraEthFilter(Record, size=200):
    flags: int = unsigned(0, 4)
    addressCount: int = unsigned(4, 2)
    addresses: list[bytes] = raw(6, 6, 32)
    reserved: bytes = raw(198, 2)


@dataclass
class VSDVS_MACAddress(Record, size=6):
    bytes: bytes = raw(0, 6)


@dataclass
class VSDVS_MACLearning(Record, size=8):
    agingTime: bytes = raw(0, 3)
    reserved: int = unsigned(3, 1)
    macLimit: int = unsigned(4, 4)


@dataclass
class VSDVS_McastList(Record, size=1):
    count: int = unsigned(0, 1)


@dataclass
class VSDVS_MirrorAddress(Record, size=20):
    isIPv6: int = unsigned(0, 1)
    reserved: bytes = raw(1, 3)
    address: bytes = raw(4, 16)


@dataclass
class VSDVS_MirrorEntity(Record, size=52):
    word: int = unsigned(0, 4)
    value: bytes = raw(4, 48)


@dataclass
class VSDVS_MirrorHeader(Record, size=20):
    magic: int = unsigned(0, 4)
    version: int = unsigned(4, 4)
    sessionCount: int = unsigned(8, 4)
    entityCount: int = unsigned(12, 4)
    reserved: int = unsigned(16, 4)


@dataclass
class VSDVS_MirrorSession(Record, size=232):
    sessionId: str = text(0, 32)
    displayName: str = text(32, 84)
    type: int = unsigned(116, 4)
    snapLength: int = signed(120, 4)
    flags: int = unsigned(124, 4)
    encapVlan: int = unsigned(128, 2)
    wildIn: int = unsigned(130, 2)
    wildOut: int = unsigned(132, 2)
    reserved1: bytes = raw(134, 2)
    samplingRate: int = unsigned(136, 4)
    reserved2: bytes = raw(140, 8)
    mirrorStack: int = unsigned(148, 1)
    reserved3: bytes = raw(149, 67)
    dstEntities: int = unsigned(216, 4)
    srcInEntities: int = unsigned(220, 4)
    srcOutEntities: int = unsigned(224, 4)
    firstEntity: int = unsigned(228, 4)


@dataclass
class VSDVS_PortMACLearning(Record, size=10):
    learning: int = unsigned(0, 1)
    flooding: int = unsigned(1, 1)
    macLimit: int = unsigned(2, 4)
    macLimitPolicy: int = unsigned(6, 4)


@dataclass
class VSDVS_PortVLAN(Record, size=8):
    flags: int = unsigned(0, 2)
    vlan: int = unsigned(2, 2)
    reserved: int = unsigned(4, 2)
    rangeCount: int = unsigned(6, 2)


@dataclass
class VSDVS_PrivateVLAN(Record, size=8):
    primary: int = unsigned(0, 2)
    secondary: int = unsigned(2, 2)
    type: int = unsigned(4, 1)
    reserved: bytes = raw(5, 3)


@dataclass
class VSDVS_TeamingPolicy(Record, size=2616):
    loadBalancing: int = unsigned(0, 4)
    linkSelection: int = unsigned(4, 4)
    word: int = unsigned(8, 4)
    linkBehaviour: int = unsigned(12, 4)
    activeCount: int = unsigned(16, 4)
    standbyCount: int = unsigned(20, 4)
    uplinks: list[str] = text(24, 81, 32)


@dataclass
class VSDVS_UplinkName(Record, size=81):
    name: str = text(0, 81)


@dataclass
class VSDVS_UplinkPort(Record, size=48):
    portId: str = text(0, 48)


@dataclass
class VSDVS_VLANRange(Record, size=4):
    first: int = unsigned(0, 2)
    last: int = unsigned(2, 2)


@dataclass
class VSHYP_GlobalMACLearningProps(Record, size=10):
    first: int = unsigned(0, 8)
    second: int = unsigned(8, 2)


@dataclass
class VSHYP_ListHeader(Record, size=8):
    count: int = unsigned(0, 4)
    word: int = unsigned(4, 4)


@dataclass
class IPFIXDVS_Port(Record, size=184):
    idleTimeout: int = unsigned(0, 4)
    activeTimeout: int = unsigned(4, 4)
    samplingRate: int = unsigned(8, 4)
    flags: int = unsigned(12, 1)
    collectorCount: int = unsigned(13, 1)
    virtualObsIDLength: int = unsigned(14, 2)
    obsDomainID: int = unsigned(16, 4)
    srcIPv4: int = unsigned(20, 4)
    collectors: list[IPFIXDVS_Collector] = nested(IPFIXDVS_Collector, 24, 20, 8)


@dataclass
class VSDVS_PortMACManagement(Record, size=11):
    macChange: int = unsigned(0, 1)
    learning: VSDVS_PortMACLearning = nested(VSDVS_PortMACLearning, 1, 10)

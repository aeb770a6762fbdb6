# SPDX-License-Identifier: Apache-2.0
"""qvs controls the virtual switches of a hypervisor host, through the library libqvs.

    with qvs.Snapshot() as host:
        for switch in host.switches:
            for port in switch.ports:
                print(switch.alias, port.id, port.vlan)

qvs.kernel reads the tables of the running kernel, qvs.config applies documents, qvs.records has the records, qvs.keys
and qvs.constants what the C headers define, and qvs.lib has every function of the libraries as in C.
"""
from qvs import config, constants, kernel, keys, lib, records
from qvs._handle import text
from qvs._policy import Ipfix, Mirrors, Vlan
from qvs.errors import (
    BadParameter,
    Error,
    Exists,
    Failure,
    LimitExceeded,
    NoHost,
    NoMemory,
    NotFound,
    NotSupported,
    StaleHandle,
)
from qvs.snapshot import Snapshot
from qvs.switch import Port, Switch, Uplink

__version__ = "1.1.0"

__all__ = [
    "BadParameter",
    "Error",
    "Exists",
    "Failure",
    "Ipfix",
    "LimitExceeded",
    "Mirrors",
    "NoHost",
    "NoMemory",
    "NotFound",
    "NotSupported",
    "Port",
    "Snapshot",
    "StaleHandle",
    "Switch",
    "Uplink",
    "Vlan",
    "__version__",
    "config",
    "constants",
    "kernel",
    "keys",
    "lib",
    "records",
    "text",
]

// SPDX-License-Identifier: Apache-2.0
// The SQL of the store: the tables of the database and the statements on them.
#pragma once

#include <cstdint>

namespace qvs::kernel {

constexpr uint32_t kSchemaVersion = 1;

// A new port is one row at the end of one table, so adding a port writes one page of the database. The row
// contains the properties that the port is created with. Properties that are set or cleared later are rows of
// port_properties. The value of a cleared property is null.
constexpr char kSchema[] = R"(
    CREATE TABLE counters (name TEXT PRIMARY KEY, value INTEGER NOT NULL) WITHOUT ROWID;
    CREATE TABLE nics (position INTEGER PRIMARY KEY, name BLOB NOT NULL, link INTEGER NOT NULL,
        admin INTEGER NOT NULL, speed INTEGER NOT NULL, mtu INTEGER NOT NULL, mac BLOB NOT NULL,
        port INTEGER NOT NULL);
    CREATE TABLE portsets (number INTEGER PRIMARY KEY, name BLOB NOT NULL, capacity INTEGER NOT NULL,
        mtu INTEGER NOT NULL);
    CREATE TABLE switches (id INTEGER PRIMARY KEY, name BLOB NOT NULL, class BLOB NOT NULL,
        max_ports INTEGER NOT NULL, version INTEGER NOT NULL, portset INTEGER NOT NULL);
    CREATE TABLE switch_properties (switch INTEGER, scope INTEGER, key BLOB, value BLOB NOT NULL,
        type INTEGER NOT NULL, PRIMARY KEY (switch, scope, key)) WITHOUT ROWID;
    CREATE TABLE ports (number INTEGER PRIMARY KEY, switch INTEGER NOT NULL, name BLOB NOT NULL,
        client BLOB NOT NULL, link INTEGER NOT NULL, properties BLOB NOT NULL);
    CREATE TABLE port_properties (port INTEGER, key BLOB, value BLOB, type INTEGER NOT NULL,
        PRIMARY KEY (port, key)) WITHOUT ROWID;
    CREATE TABLE device_values (device TEXT, key BLOB, value BLOB NOT NULL, PRIMARY KEY (device, key))
        WITHOUT ROWID;
)";

// Deletes the rows of all tables except the counters.
constexpr char kClearAll[] =
    "DELETE FROM nics; DELETE FROM portsets; DELETE FROM switches; DELETE FROM switch_properties; "
    "DELETE FROM ports; DELETE FROM port_properties; DELETE FROM device_values";

// One statement. The store prepares it once, by the address of the constant.
struct Sql {
    const char *text;
};

inline constexpr Sql kBegin{"BEGIN IMMEDIATE"};
inline constexpr Sql kCommit{"COMMIT"};
inline constexpr Sql kSetNextPort{"INSERT OR REPLACE INTO counters VALUES ('nextPort', ?)"};
inline constexpr Sql kGetNextPort{"SELECT value FROM counters WHERE name = 'nextPort'"};

inline constexpr Sql kAddNic{"INSERT INTO nics VALUES (?, ?, ?, ?, ?, ?, ?, ?)"};
inline constexpr Sql kSetNic{
    "UPDATE nics SET link = ?2, admin = ?3, speed = ?4, mtu = ?5, mac = ?6, port = ?7 WHERE position = ?1"};
inline constexpr Sql kAllNics{"SELECT name, link, admin, speed, mtu, mac, port FROM nics ORDER BY position"};
inline constexpr Sql kClearNics{"DELETE FROM nics"};

inline constexpr Sql kAddPortset{"INSERT INTO portsets VALUES (?, ?, ?, ?)"};
inline constexpr Sql kRemovePortset{"DELETE FROM portsets WHERE number = ?"};
inline constexpr Sql kSetPortsetMtu{"UPDATE portsets SET mtu = ?2 WHERE number = ?1"};
inline constexpr Sql kAllPortsets{"SELECT number, name, capacity, mtu FROM portsets ORDER BY number"};

inline constexpr Sql kAddSwitch{"INSERT INTO switches VALUES (?, ?, ?, ?, ?, 0)"};
inline constexpr Sql kSetSwitchPortset{"UPDATE switches SET portset = ?2 WHERE id = ?1"};
inline constexpr Sql kRemoveSwitch{"DELETE FROM switches WHERE id = ?"};
inline constexpr Sql kAllSwitches{
    "SELECT id, name, class, max_ports, version, portset FROM switches ORDER BY id"};

inline constexpr Sql kSetSwitchProperty{"INSERT OR REPLACE INTO switch_properties VALUES (?, ?, ?, ?, ?)"};
inline constexpr Sql kRemoveSwitchProperty{
    "DELETE FROM switch_properties WHERE switch = ? AND scope = ? AND key = ?"};
inline constexpr Sql kRemoveSwitchProperties{"DELETE FROM switch_properties WHERE switch = ?"};
inline constexpr Sql kAllSwitchProperties{"SELECT switch, scope, key, value, type FROM switch_properties"};

inline constexpr Sql kAddPort{"INSERT INTO ports VALUES (?, ?, ?, X'', 0, ?)"};
inline constexpr Sql kSetPortClient{"UPDATE ports SET client = ?2, link = ?3 WHERE number = ?1"};
inline constexpr Sql kRemovePort{"DELETE FROM ports WHERE number = ?"};
inline constexpr Sql kAllPorts{
    "SELECT number, switch, name, client, link, properties FROM ports ORDER BY number"};

inline constexpr Sql kSetPortProperty{"INSERT OR REPLACE INTO port_properties VALUES (?, ?, ?, ?)"};
inline constexpr Sql kDropPortProperty{"DELETE FROM port_properties WHERE port = ? AND key = ?"};
inline constexpr Sql kRemovePortProperties{"DELETE FROM port_properties WHERE port = ?"};
inline constexpr Sql kAllPortProperties{"SELECT port, key, value, type FROM port_properties"};

inline constexpr Sql kSetDeviceValue{"INSERT OR REPLACE INTO device_values VALUES (?, ?, ?)"};
inline constexpr Sql kRemoveDeviceValue{"DELETE FROM device_values WHERE device = ? AND key = ?"};
inline constexpr Sql kAllDeviceValues{"SELECT device, key, value FROM device_values"};

}  // namespace qvs::kernel

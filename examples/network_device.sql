-- Configuration schema of a small network device, as its configuration
-- component would ship it. The database layer (host/DATABASE.md) reads the
-- dictionary straight from this SQL:
--   * tables are numbered in the order they are created here, from 1, and the
--     numbers are stored in "parent.parentStructNo", so new tables go at the end;
--   * a column's declared type is its field type (U8..U64, S8..S64, READING,
--     CHAR(n), TEXT, BOOL, REAL);
--   * a dotted column name is a member of a structure field ("state.admin" is
--     member admin of structure state);
--   * the unique index identifier_<Table> is the table's "identifier" index,
--     the key by which entries are found; a table without one holds a single
--     entry.
-- Entries of the device's running configuration have objType 2 and
-- objStatus 10, which is why those are the column defaults.

-- 1: the device as a whole. No identifier index: one entry.
CREATE TABLE System (
    hostname CHAR(32) NOT NULL DEFAULT 'device',
    contact TEXT,
    location TEXT,
    timezoneOffset S8 NOT NULL DEFAULT 0,  -- hours from UTC
    bootCount U32 NOT NULL DEFAULT 0,
    clockDrift S64,                        -- nanoseconds
    uptimeReading READING,                 -- latest sampled uptime, seconds
    "maintenance.enabled" BOOL NOT NULL DEFAULT 0,
    "maintenance.window.start" U16,        -- minutes after midnight
    "maintenance.window.length" U16
);

-- 2: a network interface, known by its name.
CREATE TABLE Interface (
    objType U8 NOT NULL DEFAULT 2,
    objStatus U8 NOT NULL DEFAULT 10,
    name CHAR(16) NOT NULL,
    description TEXT,
    mtu U16 NOT NULL DEFAULT 1500,
    speed U64,                             -- bits per second
    "state.admin" BOOL NOT NULL DEFAULT 1,
    "state.oper" BOOL NOT NULL DEFAULT 0,
    rxGain REAL
);
CREATE UNIQUE INDEX identifier_Interface ON Interface (objType, objStatus, name);

-- 3: a switch port, known by its number.
CREATE TABLE Port (
    objType U8 NOT NULL DEFAULT 2,
    objStatus U8 NOT NULL DEFAULT 10,
    number U16 NOT NULL,
    "state.admin" BOOL NOT NULL DEFAULT 1,
    "state.oper" BOOL NOT NULL DEFAULT 0,
    vlan U16 NOT NULL DEFAULT 1,
    delayOffset S16 NOT NULL DEFAULT 0,    -- cable delay correction, ns
    temperature S32,                       -- transceiver, millidegrees
    rxPower READING,                       -- microdecibel-milliwatts
    "counters.inOctets" U64 NOT NULL DEFAULT 0,
    "counters.outOctets" U64 NOT NULL DEFAULT 0,
    priority S8 NOT NULL DEFAULT 0
);
CREATE UNIQUE INDEX identifier_Port ON Port (objType, objStatus, number);
CREATE INDEX byVlan_Port ON Port (vlan);

-- 4: an IP address of an interface: its parent is the Interface entry, and
-- the identifier holds the parent reference before the address's own id.
CREATE TABLE Address (
    objType U8 NOT NULL DEFAULT 2,
    objStatus U8 NOT NULL DEFAULT 10,
    "parent.parentStructNo" U16 NOT NULL,
    "parent.parentId" U32 NOT NULL,
    id U32 NOT NULL,
    ip CHAR(45) NOT NULL,
    prefixLength U8 NOT NULL,
    preferred BOOL NOT NULL DEFAULT 0
);
CREATE UNIQUE INDEX identifier_Address ON Address (objType, objStatus, "parent.parentStructNo", "parent.parentId", id);

-- 5: a static route, known by two key fields: destination and prefix length.
CREATE TABLE Route (
    objType U8 NOT NULL DEFAULT 2,
    objStatus U8 NOT NULL DEFAULT 10,
    destination CHAR(45) NOT NULL,
    prefixLength U8 NOT NULL,
    gateway CHAR(45),
    metric U32 NOT NULL DEFAULT 1,
    distance S8 NOT NULL DEFAULT 0
);
CREATE UNIQUE INDEX identifier_Route ON Route (objType, objStatus, destination, prefixLength);

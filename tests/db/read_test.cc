// Reading entries: key look-ups (with a parent in the key, signed keys set
// through the 32-bit setter), first and next entry, getAsString and typed
// reads per field type (which C++ types fit which field types), parents
// filtered by objType and objStatus, and values written past the layer.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>
#include <utility>

#include "db_test_support.h"

namespace {

using dbtest::insert;
using dbtest::text;
using dbtest::values;

class ReadTest : public ::testing::Test {
protected:
    void SetUp() override {
        eth0_ = dbtest::addInterface(db_, "eth0");
        eth1_ = dbtest::addInterface(db_, "eth1");
        dbtest::addAddress(db_, eth0_, "1", "10.0.0.1");
        dbtest::addAddress(db_, eth1_, "1", "10.0.1.1");
        ASSERT_TRUE(tx_.start().isSuccess());
    }

    uint16_t no(const char* table) { return tx_.getBase().getStructNo(table); }

    // The entry of `table` whose identifier holds `keys` (user key fields, in
    // order) after objType 2 and objStatus 10, and, with a parent, the parent.
    XCode find(DB::ObjRead& entry, const char* table, VXVector<String> keys, uint64_t parentUid = 0,
               uint32_t parentNo = 2) {
        DB::_Key key(no(table), tx_.getBase().getIndexNo(no(table), "identifier"),
                     tx_.getDatabaseDescription());
        VXVector<String> fields;
        XCode rc = tx_.getBase().getListOfIndexFields(key.getStructNo(), key.getIndexNo(), fields);
        size_t next = 0;
        for (const String& f : fields) {
            if (rc.isErr()) break;
            if (f == "objType") {
                rc = key.set(f, 2u);
            } else if (f == "objStatus") {
                rc = key.set(f, 10u);
            } else if (f == "parent.parentStructNo") {
                rc = key.set(f, parentNo);
            } else if (f == "parent.parentId") {
                rc = key.set(f, text(parentUid));
            } else if (next < keys.size()) {
                rc = key.set(f, keys[next++]);
            }
        }
        return rc.isSuccess() ? entry.lookup(key) : rc;
    }

    VXPtr<DB::Database> db_ = dbtest::openExample();
    uint64_t eth0_ = 0, eth1_ = 0;
    DB::Transaction tx_{DB::TRANSACTION_READ, db_};
};

TEST_F(ReadTest, LookupWithParentInTheKey) {
    DB::ObjRead entry(tx_);
    String ip;
    for (auto [parent, expected] : {std::pair{eth1_, "10.0.1.1"}, std::pair{eth0_, "10.0.0.1"}}) {
        ASSERT_TRUE(find(entry, "Address", {"1"}, parent).isSuccess());
        ASSERT_TRUE(entry.get("ip", ip).isSuccess());
        EXPECT_EQ(ip, expected);
        EXPECT_EQ(entry.getStructName(), "Address");
        EXPECT_EQ(entry.getStructNo(), 4);
    }
    // A failed look-up leaves the entry where it was.
    const uint64_t uid = entry.getUID();
    XCode rc = find(entry, "Address", {"9"}, eth0_);
    EXPECT_EQ(rc.getValue(), DB::E_NOT_FOUND);
    EXPECT_EQ(rc.getString(), "DATABASE ENTRY NOT FOUND: Address");
    EXPECT_EQ(entry.getUID(), uid);
    EXPECT_EQ(find(entry, "Interface", {"eth9"}).getValue(), DB::E_NOT_FOUND);
}

TEST_F(ReadTest, KeyErrors) {
    uint16_t address = no("Address");
    DB::_Key key(address, 0, tx_.getDatabaseDescription());
    struct Case {
        XCode rc;
        const char* text;
    } cases[] = {
        {key.set("ip", "10.0.0.1"), "NOT A FIELD OF DATABASE INDEX identifier: Address.ip"},
        {key.set("objType", 300u), "VALUE OUT OF RANGE FOR DATABASE FIELD: Address.objType"},
        {key.set("objType", "x"), "INVALID VALUE FOR DATABASE FIELD: Address.objType"},
        {key.set("id", "-1"), "INVALID VALUE FOR DATABASE FIELD: Address.id"},
        {DB::_Key(no("Interface"), 0, tx_.getDatabaseDescription()).set("name", 1u),
         "FIELD TYPE MISMATCH: Interface.name"},
        {DB::_Key(no("Interface"), 0, tx_.getDatabaseDescription())
             .set("name", String(std::string(17, 'x'))),
         "VALUE TOO LONG FOR DATABASE FIELD: Interface.name"},
        {DB::_Key(77, 0, tx_.getDatabaseDescription()).set("name", "x"),
         "INVALID DATABASE TABLE NUMBER: 77"},
        {DB::_Key(address, 3, tx_.getDatabaseDescription()).set("id", 1u),
         "INVALID DATABASE INDEX NUMBER: Address.3"},
    };
    for (const Case& c : cases) EXPECT_EQ(c.rc.getString(), c.text);

    ASSERT_TRUE(key.set("objType", 2u).isSuccess());
    DB::ObjRead entry(tx_);
    XCode rc = entry.lookup(key);
    EXPECT_EQ(rc.getValue(), DB::E_VALUE);
    EXPECT_EQ(rc.getString(), "INCOMPLETE DATABASE KEY: Address.objStatus");
    EXPECT_FALSE(entry.hasEntry());
}

TEST_F(ReadTest, SignedKeysThroughTheUnsignedSetter) {
    ASSERT_TRUE(tx_.commit().isSuccess());
    ASSERT_TRUE(
        db_->applySchema("CREATE TABLE Offset (small S8 NOT NULL, big S64 NOT NULL, "
                         "huge U64 NOT NULL, tag TEXT);"
                         "CREATE UNIQUE INDEX identifier_Offset ON Offset (small, big, huge);")
            .isSuccess());
    insert(db_, "Offset", values("small=-5,big=-7,huge=4294967295,tag=neg"));
    insert(db_, "Offset", values("small=5,big=7,huge=1,tag=pos"));
    DB::Transaction tx(DB::TRANSACTION_READ, db_);
    ASSERT_TRUE(tx.start().isSuccess());
    uint16_t offset = tx.getBase().getStructNo("Offset");
    DB::_Key key(offset, 0, tx.getDatabaseDescription());
    // What a caller with only a 32-bit setter does: the number's low 32 bits.
    int64_t big = -7;
    ASSERT_TRUE(key.set("small", static_cast<uint32_t>(-5)).isSuccess());
    ASSERT_TRUE(key.set("big", static_cast<uint32_t>(big)).isSuccess());
    ASSERT_TRUE(key.set("huge", 0xFFFFFFFFu).isSuccess());
    DB::ObjRead entry(tx);
    ASSERT_TRUE(entry.lookup(key).isSuccess());
    String tag;
    ASSERT_TRUE(entry.get("tag", tag).isSuccess());
    EXPECT_EQ(tag, "neg");
    EXPECT_EQ(key.set("small", static_cast<uint32_t>(-200)).getString(),
              "VALUE OUT OF RANGE FOR DATABASE FIELD: Offset.small");
}

TEST_F(ReadTest, FirstAndNextEntry) {
    DB::ObjRead entry(tx_);
    ASSERT_TRUE(entry.setStructNo(no("Interface")).isSuccess());
    ASSERT_TRUE(entry.readFirst().isSuccess());
    EXPECT_EQ(entry.getUID(), eth0_);
    ASSERT_TRUE(entry.readNext().isSuccess());
    EXPECT_EQ(entry.getUID(), eth1_);
    XCode rc = entry.readNext();
    EXPECT_EQ(rc.getValue(), DB::E_NOT_FOUND);
    EXPECT_EQ(rc.getString(), "NO DATABASE ENTRY: Interface");
    EXPECT_EQ(entry.getUID(), eth1_);

    ASSERT_TRUE(entry.setStructNo(no("Route")).isSuccess());
    EXPECT_FALSE(entry.hasEntry());
    EXPECT_EQ(entry.readFirst().getString(), "NO DATABASE ENTRY: Route");
    EXPECT_EQ(entry.setStructNo(0).getString(), "INVALID DATABASE TABLE NUMBER: 0");

    DB::ObjRead unbound;
    EXPECT_EQ(unbound.readFirst().getString(), "NO DATABASE TABLE SELECTED");
    String s;
    EXPECT_EQ(unbound.getAsString("name", s).getString(), "NO DATABASE TABLE SELECTED");
}

class ValuesTest : public ReadTest {
protected:
    void SetUp() override {
        ReadTest::SetUp();
        ASSERT_TRUE(tx_.commit().isSuccess());
        insert(db_, "System",
               values("bootCount=4294967295,timezoneOffset=-128,clockDrift=-9223372036854775808,"
                      "uptimeReading=0,maintenance.window.start=90"));
        insert(db_, "Port",
               values("number=65535,delayOffset=-5,temperature=-2147483648,rxPower=-42,"
                      "counters.inOctets=18446744073709551615,priority=127"));
        insert(db_, "Interface", values("name=lo,speed=0x10,state.oper=true,rxGain=0.1"));
        ASSERT_TRUE(tx_.start().isSuccess());
        ASSERT_TRUE(system_.setStructNo(no("System")).isSuccess());
        ASSERT_TRUE(system_.readFirst().isSuccess());
        ASSERT_TRUE(find(port_, "Port", {"65535"}).isSuccess());
        ASSERT_TRUE(find(lo_, "Interface", {"lo"}).isSuccess());
    }
    DB::ObjRead system_{tx_}, port_{tx_}, lo_{tx_};
};

// Reads `field` of `e` as a T; `text` is the value read, printed.
template <typename T>
XCode readAs(const DB::ObjRead& e, const char* field, std::string& text) {
    T value{};
    XCode rc = e.get(field, value);
    std::ostringstream out;
    if constexpr (std::is_same_v<T, String>) {
        out << value.str();
    } else {
        out << std::boolalpha << value;
    }
    text = out.str();
    return rc;
}

// The C++ types a field may be read into, one bit each in Case::fits.
enum Target { UINT = 1, ULL = 2, INT = 4, LL = 8, BOOL = 16, STR = 32, DBL = 64 };
const int UNSIGNED_SMALL = UINT | ULL | INT | LL;  // U8, U16
XCode (*const READERS[])(const DB::ObjRead&, const char*, std::string&) = {
    readAs<unsigned>, readAs<unsigned long long>,
    readAs<int>,      readAs<long long>,
    readAs<bool>,     readAs<String>,
    readAs<double>};

// Every field as text, and read into each C++ type: exactly the types that
// hold every value of the field type read it, and read the same value.
TEST_F(ValuesTest, ReadsAsStringAndAsTheTypesThatFit) {
    struct Case {
        DB::ObjRead* entry;
        const char* field;
        const char* text;
        int fits;
    } cases[] = {
        {&port_, "objType", "2", UNSIGNED_SMALL},
        {&port_, "number", "65535", UNSIGNED_SMALL},
        {&lo_, "mtu", "1500", UNSIGNED_SMALL},
        {&system_, "maintenance.window.start", "90", UNSIGNED_SMALL},
        {&system_, "bootCount", "4294967295", UINT | ULL | LL},
        {&port_, "counters.inOctets", "18446744073709551615", ULL},
        {&lo_, "speed", "16", ULL},
        {&system_, "timezoneOffset", "-128", INT | LL},
        {&port_, "priority", "127", INT | LL},
        {&port_, "delayOffset", "-5", INT | LL},
        {&port_, "temperature", "-2147483648", INT | LL},
        {&system_, "clockDrift", "-9223372036854775808", LL},
        {&port_, "rxPower", "-42", LL},
        {&system_, "uptimeReading", "0", LL},
        {&lo_, "name", "lo", STR},
        {&system_, "hostname", "device", STR},  // SQL default
        {&lo_, "state.oper", "true", BOOL},
        {&lo_, "state.admin", "true", BOOL},
        {&system_, "maintenance.enabled", "false", BOOL},
        {&lo_, "rxGain", "0.1", DBL},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.field);
        String s;
        XCode rc = c.entry->getAsString(c.field, s);
        EXPECT_TRUE(rc.isSuccess()) << rc.toString().c_str();
        EXPECT_EQ(s, c.text);
        for (int bit = 0; bit < 7; ++bit) {
            const int t = 1 << bit;
            std::string text;
            rc = READERS[bit](*c.entry, c.field, text);
            if (c.fits & t) {
                EXPECT_TRUE(rc.isSuccess()) << "target " << t;
                EXPECT_EQ(text, c.text) << "target " << t;
            } else {
                EXPECT_EQ(rc.getString(),
                          "FIELD TYPE MISMATCH: " + c.entry->getStructName() + "." + c.field)
                    << "target " << t;
            }
        }
    }
    String s = "unchanged";
    EXPECT_EQ(lo_.getAsString("state", s).getString(), "FIELD IS A STRUCTURE: Interface.state");
    XCode rc = lo_.getAsString("description", s);
    EXPECT_EQ(rc.getValue(), DB::E_VALUE);
    EXPECT_EQ(rc.getString(), "DATABASE FIELD HAS NO VALUE: Interface.description");
    EXPECT_EQ(lo_.getAsString("nosuch", s).getString(), "NO SUCH DATABASE FIELD: Interface.nosuch");
    EXPECT_EQ(lo_.getAsString("name", s, 1, 0).getString(),
              "INVALID FIELD SELECTOR: Interface.name");
    EXPECT_EQ(s, "unchanged");
}

TEST_F(ReadTest, ParentsFilteredByTypeAndStatus) {
    ASSERT_TRUE(tx_.commit().isSuccess());
    insert(db_, "Address",
           values("parent.parentStructNo=0,parent.parentId=0,id=7,ip=::1,prefixLength=128"));
    ASSERT_TRUE(tx_.start().isSuccess());
    DB::ObjRead address(tx_), parent, other;
    ASSERT_TRUE(find(address, "Address", {"1"}, eth1_).isSuccess());
    EXPECT_TRUE(address.hasParent());
    ASSERT_TRUE(address.getParentObj(parent, 2, 10).isSuccess());
    EXPECT_EQ(parent.getStructName(), "Interface");
    EXPECT_EQ(parent.getUID(), eth1_);
    String name;
    ASSERT_TRUE(parent.get("name", name).isSuccess());
    EXPECT_EQ(name, "eth1");
    EXPECT_FALSE(parent.hasParent());

    XCode rc = address.getParentObj(other, 2, 11);
    EXPECT_EQ(rc.getValue(), DB::E_NOT_FOUND);
    EXPECT_EQ(rc.getString(), "PARENT DATABASE ENTRY NOT FOUND: Address");
    EXPECT_FALSE(other.hasEntry());
    EXPECT_EQ(parent.getParentObj(other, 2, 10).getString(),
              "DATABASE ENTRY HAS NO PARENT: Interface");
    // A parent reference of zeros is none.
    ASSERT_TRUE(find(address, "Address", {"7"}, 0, 0).isSuccess());
    EXPECT_FALSE(address.hasParent());
    EXPECT_EQ(address.getParentObj(other, 2, 10).getString(),
              "DATABASE ENTRY HAS NO PARENT: Address");
}

TEST_F(ReadTest, ValuesWrittenPastTheLayerAreReportedInvalid) {
    ASSERT_TRUE(tx_.commit().isSuccess());
    ASSERT_TRUE(db_->applySchema("INSERT INTO Port (number, priority, \"state.admin\", vlan)"
                                 " VALUES (7, 300, 2, 'ten')")
                    .isSuccess());
    ASSERT_TRUE(tx_.start().isSuccess());
    DB::ObjRead port(tx_);
    ASSERT_TRUE(find(port, "Port", {"7"}).isSuccess());
    int i = 99;
    bool b = false;
    unsigned u = 99;
    EXPECT_EQ(port.get("priority", i).getString(),
              "INVALID VALUE IN DATABASE FIELD: Port.priority");
    EXPECT_EQ(port.get("state.admin", b).getString(),
              "INVALID VALUE IN DATABASE FIELD: Port.state.admin");
    EXPECT_EQ(port.get("vlan", u).getString(), "INVALID VALUE IN DATABASE FIELD: Port.vlan");
    EXPECT_EQ(i, 99);
    EXPECT_EQ(u, 99u);
    ASSERT_TRUE(port.get("number", u).isSuccess());
    EXPECT_EQ(u, 7u);
}

}  // namespace

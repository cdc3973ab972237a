// Reading entries through the API the tool does not show (look-ups with a
// parent are in the tool's db_entries transcript): key errors, typed reads
// (which C++ types fit which field types), parents filtered by objType and
// objStatus, and values written past the layer.
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <type_traits>

#include "db_test_support.h"

namespace {

using dbtest::insert;
using dbtest::values;

class ReadTest : public ::testing::Test {
protected:
    void SetUp() override {
        eth1_ = dbtest::addInterface(db_, "eth1");
        dbtest::addAddress(db_, eth1_, "1", "10.0.1.1");
        insert(db_, "Address",
               values("parent.parentStructNo=0,parent.parentId=0,id=7,ip=::1,prefixLength=128"));
        insert(db_, "System",
               values("bootCount=4294967295,timezoneOffset=-128,clockDrift=-9223372036854775808"));
        insert(db_, "Port",
               values("number=65535,temperature=-2147483648,rxPower=-42,"
                      "counters.inOctets=18446744073709551615"));
        insert(db_, "Interface", values("name=lo,state.oper=true,rxGain=0.1"));
        ASSERT_TRUE(db_->applySchema("INSERT INTO Port (number, priority, \"state.admin\", vlan)"
                                     " VALUES (7, 300, 2, 'ten')")
                        .isSuccess());
        ASSERT_TRUE(tx_.start().isSuccess());
    }

    uint16_t no(const char* table) { return tx_.getBase().getStructNo(table); }

    // Looks up the entry of `table` with objType 2, objStatus 10, the parent
    // `parentNo`:`parentUid` when the table has one, and then `id`.
    XCode find(DB::ObjRead& entry, const char* table, const char* id, uint64_t parentUid = 0,
               uint32_t parentNo = 2) {
        DB::_Key k(no(table), 0, tx_.getDatabaseDescription());
        VXVector<String> fields;
        EXPECT_TRUE(tx_.getBase().getListOfIndexFields(no(table), 0, fields).isSuccess());
        for (const String& f : fields) {
            XCode rc = f == "objType"                 ? k.set(f, 2u)
                       : f == "objStatus"             ? k.set(f, 10u)
                       : f == "parent.parentStructNo" ? k.set(f, parentNo)
                       : f == "parent.parentId"       ? k.set(f, dbtest::text(parentUid))
                                                      : k.set(f, id);
            EXPECT_TRUE(rc.isSuccess()) << f.c_str();
        }
        return entry.lookup(k);
    }

    VXPtr<DB::Database> db_ = dbtest::openExample();
    uint64_t eth1_ = 0;
    DB::Transaction tx_{DB::TRANSACTION_READ, db_};
};

TEST_F(ReadTest, KeyErrors) {
    const uint16_t address = no("Address"), interface = no("Interface");
    DB::_Key key(address, 0, tx_.getDatabaseDescription());
    DB::ObjRead unbound, entry(tx_);
    String s;
    const struct {
        XCode rc;
        const char* text;
    } cases[] = {
        {key.set("ip", "10.0.0.1"), "NOT A FIELD OF DATABASE INDEX identifier: Address.ip"},
        {key.set("objType", 300u), "VALUE OUT OF RANGE FOR DATABASE FIELD: Address.objType"},
        {DB::_Key(interface, 0, tx_.getDatabaseDescription()).set("name", 1u),
         "FIELD TYPE MISMATCH: Interface.name"},
        {(key.set("objType", 2u), entry.lookup(key)), "INCOMPLETE DATABASE KEY: Address.objStatus"},
        {unbound.getAsString("name", s), "NO DATABASE TABLE SELECTED"},
    };
    for (const auto& c : cases) EXPECT_EQ(c.rc.getString(), c.text);
    EXPECT_FALSE(entry.hasEntry());
}

// Reads `field` of `e` as a T, printed into `text`.
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

// The C++ types a field may be read into, one bit each.
enum Target { UINT = 1, ULL = 2, INT = 4, LL = 8, BOOL = 16, STR = 32, DBL = 64 };
XCode (*const READERS[])(const DB::ObjRead&, const char*, std::string&) = {
    readAs<unsigned>, readAs<unsigned long long>,
    readAs<int>,      readAs<long long>,
    readAs<bool>,     readAs<String>,
    readAs<double>};

// Exactly the types that hold every value of the field type read it, and
// read what getAsString shows; values written past the layer read as none.
TEST_F(ReadTest, TypedReadsTakeTheTypesThatFit) {
    DB::ObjRead system(tx_), port(tx_), lo(tx_);
    ASSERT_TRUE(system.setStructNo(no("System")).isSuccess());
    ASSERT_TRUE(system.readFirst().isSuccess());
    ASSERT_TRUE(find(port, "Port", "65535").isSuccess());
    ASSERT_TRUE(find(lo, "Interface", "lo").isSuccess());
    const struct {
        DB::ObjRead* entry;
        const char* field;
        const char* text;
        int fits;
    } cases[] = {
        {&port, "number", "65535", UINT | ULL | INT | LL},
        {&system, "bootCount", "4294967295", UINT | ULL | LL},
        {&port, "counters.inOctets", "18446744073709551615", ULL},
        {&system, "timezoneOffset", "-128", INT | LL},
        {&port, "temperature", "-2147483648", INT | LL},
        {&system, "clockDrift", "-9223372036854775808", LL},
        {&port, "rxPower", "-42", LL},
        {&lo, "name", "lo", STR},
        {&lo, "state.oper", "true", BOOL},
        {&lo, "rxGain", "0.1", DBL},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.field);
        String s;
        EXPECT_TRUE(c.entry->getAsString(c.field, s).isSuccess());
        EXPECT_EQ(s, c.text);
        for (int bit = 0; bit < 7; ++bit) {
            std::string text;
            XCode rc = READERS[bit](*c.entry, c.field, text);
            const bool fits = c.fits & (1 << bit);
            EXPECT_EQ(
                rc.getString(),
                fits ? "" : "FIELD TYPE MISMATCH: " + c.entry->getStructName() + "." + c.field)
                << "target " << (1 << bit);
            EXPECT_EQ(text, fits ? c.text : text) << "target " << (1 << bit);
        }
    }
    String s = "unchanged";
    EXPECT_EQ(lo.getAsString("state", s).getString(), "FIELD IS A STRUCTURE: Interface.state");
    for (int sel : {1, 2}) {
        EXPECT_EQ(lo.getAsString("name", s, sel & 1, sel >> 1).getString(),
                  "INVALID FIELD SELECTOR: Interface.name");
    }
    EXPECT_EQ(s, "unchanged");

    ASSERT_TRUE(find(port, "Port", "7").isSuccess());
    int i = 99;
    bool b = false;
    unsigned u = 99;
    EXPECT_EQ(port.get("priority", i).getString(),
              "INVALID VALUE IN DATABASE FIELD: Port.priority");
    EXPECT_EQ(port.get("state.admin", b).getString(),
              "INVALID VALUE IN DATABASE FIELD: Port.state.admin");
    EXPECT_EQ(port.get("vlan", u).getString(), "INVALID VALUE IN DATABASE FIELD: Port.vlan");
    EXPECT_TRUE(i == 99 && u == 99u && !b);
}

TEST_F(ReadTest, ParentsFilteredByTypeAndStatus) {
    DB::ObjRead address(tx_), parent, other;
    ASSERT_TRUE(find(address, "Address", "1", eth1_).isSuccess());
    ASSERT_TRUE(address.getParentObj(parent, 2, 10).isSuccess());
    EXPECT_EQ(parent.getUID(), eth1_);
    EXPECT_EQ(address.getParentObj(other, 2, 11).getString(),
              "PARENT DATABASE ENTRY NOT FOUND: Address");
    EXPECT_EQ(parent.getParentObj(other, 2, 10).getString(),
              "DATABASE ENTRY HAS NO PARENT: Interface");
    ASSERT_TRUE(find(address, "Address", "7", 0, 0).isSuccess());
    EXPECT_FALSE(address.hasParent());  // a parent reference of zeros is none
}

}  // namespace

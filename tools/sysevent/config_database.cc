// ConfigDatabase: opening the configuration database and the db command.
#include "tools/sysevent/config_database.h"

#include <cctype>

#include "tools/sysevent/bundled_schema.h"

namespace SysEventTool {

namespace {

const char* const IDENTIFIER_INDEX = "identifier";
const char* const PARENT_STRUCT_FIELD = "parent.parentStructNo";
const char* const PARENT_ID_FIELD = "parent.parentId";

}  // namespace

XCode ConfigDatabase::open(const String& path) {
    XCode rc = path.isEmpty() ? DB::Database::OPEN_IN_MEMORY(database_)
                              : DB::Database::OPEN(database_, path, DB::Database::OPEN_CREATE);
    if (rc.isErr()) return rc;
    if (database_->getBase()->getNumberOfStructs() == 0) {
        rc = database_->applySchema(BUNDLED_SCHEMA);
        if (rc.isErr()) return rc;
    }
    use(database_);
    return XCode();
}

void ConfigDatabase::use(const VXPtr<DB::Database>& database) {
    database_ = database;
    DB::Database::SET_DEFAULT(database_);
}

XCode ConfigDatabase::PARSE_SPECIFIERS(const String& text, std::vector<Specifier>& chain) {
    chain.clear();
    size_t start = 0;
    for (size_t i = 0; i <= text.length(); ++i) {
        bool split = i == text.length() ||
                     (text[i] == '.' && i + 1 < text.length() &&
                      (isalpha(static_cast<unsigned char>(text[i + 1])) || text[i + 1] == '_'));
        if (!split) continue;
        std::vector<String> parts = text.substring(start, i - start).splitAtChars(":");
        Specifier specifier;
        specifier.table = parts.front();
        if (specifier.table.isEmpty()) return XCode::Failure("MISSING TABLE NAME");
        specifier.keys.assign(parts.begin() + 1, parts.end());
        chain.push_back(specifier);
        start = i + 1;
    }
    return XCode();
}

XCode ConfigDatabase::keyValues(DB::Transaction& tx, const std::vector<Specifier>& chain, size_t i,
                                Values& out) {
    const Specifier& specifier = chain[i];
    const DB::Base& base = tx.getBase();
    uint16_t structNo = base.getStructNo(specifier.table);
    if (structNo == DB::NO_STRUCT) {
        return XCode::Failure(
            String::Formatted("INVALID DATABASE TABLE: %s", specifier.table.c_str()));
    }
    uint16_t indexNo = base.getIndexNo(structNo, IDENTIFIER_INDEX);
    if (indexNo == DB::NO_INDEX) {
        if (specifier.keys.empty()) return XCode();
        return XCode::Failure(
            String::Formatted("TABLE HAS NO IDENTIFIER INDEX: %s", specifier.table.c_str()));
    }
    VXVector<String> fields;
    XCode rc = base.getListOfIndexFields(structNo, indexNo, fields);
    if (rc.isErr()) return rc;
    size_t next = 0;
    for (const String& field : fields) {
        if (field == "objType") {
            out.emplace_back(field, "2");
        } else if (field == "objStatus") {
            out.emplace_back(field, "10");
        } else if (field == PARENT_STRUCT_FIELD || field == PARENT_ID_FIELD) {
            if (i == 0) {
                return XCode::Failure(
                    String::Formatted("PARENT SPECIFIER REQUIRED: %s", specifier.table.c_str()));
            }
            if (field == PARENT_STRUCT_FIELD) {
                uint16_t parentNo = base.getStructNo(chain[i - 1].table);
                if (parentNo == DB::NO_STRUCT) {
                    return XCode::Failure(String::Formatted("INVALID DATABASE TABLE: %s",
                                                            chain[i - 1].table.c_str()));
                }
                out.emplace_back(field, String::stringOf(static_cast<unsigned>(parentNo)));
            } else {
                DB::ObjRead parent;
                rc = locate(tx, chain, i - 1, parent);
                if (rc.isErr()) return rc;
                out.emplace_back(
                    field, String::stringOf(static_cast<unsigned long long>(parent.getUID())));
            }
        } else {
            if (next >= specifier.keys.size()) {
                return XCode::Failure(
                    String::Formatted("NOT ENOUGH KEY VALUES: %s", specifier.table.c_str()));
            }
            out.emplace_back(field, specifier.keys[next++]);
        }
    }
    if (next < specifier.keys.size()) {
        return XCode::Failure(
            String::Formatted("TOO MANY KEY VALUES: %s", specifier.table.c_str()));
    }
    return XCode();
}

XCode ConfigDatabase::locate(DB::Transaction& tx, const std::vector<Specifier>& chain, size_t i,
                             DB::ObjRead& entry) {
    Values key;
    XCode rc = keyValues(tx, chain, i, key);
    if (rc.isErr()) return rc;
    const DB::Base& base = tx.getBase();
    uint16_t structNo = base.getStructNo(chain[i].table);
    entry = DB::ObjRead(tx);
    rc = entry.setStructNo(structNo);
    if (rc.isErr()) return rc;
    uint16_t indexNo = base.getIndexNo(structNo, IDENTIFIER_INDEX);
    if (indexNo == DB::NO_INDEX) return entry.readFirst();
    DB::_Key lookup(structNo, indexNo, tx.getDatabaseDescription());
    for (const auto& [field, text] : key) {
        rc = lookup.set(field, text);
        if (rc.isErr()) return rc;
    }
    return entry.lookup(lookup);
}

void ConfigDatabase::show(const DB::ObjRead& entry) {
    output_.line(String::Formatted("%s entry %llu", entry.getStructName().c_str(),
                                   static_cast<unsigned long long>(entry.getUID())));
    VXPtr<const DB::Base> base = database_->getBase();
    VXVector<String> fields;
    if (base->getListOfFields(entry.getStructNo(), fields).isErr()) return;
    for (const String& field : fields) {
        DB::FieldInfo info;
        if (base->getFieldInfo(entry.getStructNo(), field, info).isErr()) continue;
        if (info.type == DB::FT_STRUCT) continue;  // its members are listed
        String text;
        if (entry.getAsString(field, text).isErr()) text = "(no value)";
        output_.line("  " + field + " = " + text);
    }
}

XCode ConfigDatabase::command(const std::vector<Word>& words, unsigned& column) {
    if (words.empty()) return XCode::Failure("expecting insert, update, delete or show");
    const String& verb = words[0].text;
    column = words[0].column;
    if (verb != "insert" && verb != "update" && verb != "delete" && verb != "show") {
        return XCode::Failure("expecting insert, update, delete or show, not '" + verb + "'");
    }
    if (words.size() < 2) {
        column = words[0].column + static_cast<unsigned>(verb.length()) + 1;
        return XCode::Failure("expecting a database entry, such as Interface:eth0");
    }
    column = words[1].column;
    std::vector<Specifier> chain;
    XCode rc = PARSE_SPECIFIERS(words[1].text, chain);
    if (rc.isErr()) return rc;

    Values values;
    for (size_t i = 2; i < words.size(); ++i) {
        int eq = words[i].text.indexOf('=');
        if (eq <= 0 || verb == "delete" || verb == "show") {
            column = words[i].column;
            return XCode::Failure(verb == "delete" || verb == "show"
                                      ? String("unexpected text after the database entry")
                                      : String("expecting FIELD=VALUE"));
        }
        values.emplace_back(words[i].text.substring(0, eq), words[i].text.substring(eq + 1));
    }
    if (verb == "update" && values.empty()) {
        column = words[1].column + static_cast<unsigned>(words[1].text.length()) + 1;
        return XCode::Failure("expecting FIELD=VALUE");
    }

    const String& table = chain.back().table;
    if (verb == "show") {
        DB::Transaction tx(DB::TRANSACTION_READ);
        rc = tx.start();
        if (rc.isErr()) return rc;
        uint16_t structNo = tx.getBase().getStructNo(table);
        bool wholeTable = chain.size() == 1 && chain.back().keys.empty() &&
                          structNo != DB::NO_STRUCT &&
                          tx.getBase().getIndexNo(structNo, IDENTIFIER_INDEX) != DB::NO_INDEX;
        DB::ObjRead entry(tx);
        if (wholeTable) {
            rc = entry.setStructNo(structNo);
            for (rc = rc.isErr() ? rc : entry.readFirst(); rc.isSuccess(); rc = entry.readNext()) {
                show(entry);
            }
            return tx.commit();
        }
        rc = locate(tx, chain, chain.size() - 1, entry);
        if (rc.isErr()) return rc;
        show(entry);
        return tx.commit();
    }

    DB::Transaction tx(DB::TRANSACTION_WRITE);
    rc = tx.start();
    if (rc.isErr()) return rc;
    DB::ObjWrite writer(tx);
    if (verb == "insert") {
        Values all;
        rc = keyValues(tx, chain, chain.size() - 1, all);
        if (rc.isErr()) return rc;
        all.insert(all.end(), values.begin(), values.end());
        rc = writer.insert(table, all);
    } else {
        DB::ObjRead entry;
        rc = locate(tx, chain, chain.size() - 1, entry);
        if (rc.isErr()) return rc;
        rc = verb == "update" ? writer.update(table, entry.getUID(), values)
                              : writer.remove(table, entry.getUID());
    }
    if (rc.isErr()) {
        if (words.size() > 2) column = words[2].column;
        return rc;
    }
    // The commit delivers the change to the tracker, which updates the
    // variables bound to the entry.
    return tx.commit();
}

}  // namespace SysEventTool

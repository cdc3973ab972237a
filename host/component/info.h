// IInfo and InfoContainer: diagnostic rows that a component lists about
// itself, for the host's inspection tools. A row is (level, column, key,
// value): level is the nesting depth, column the table column.
#pragma once

#include "host/component/unknown.h"
#include "host/runtime/containers.h"
#include "host/runtime/string.h"

class InfoContainer {
public:
    struct Row {
        unsigned level;
        unsigned column;
        String key;
        String value;
        friend bool operator==(const Row&, const Row&) = default;
    };

    // Appends a row.
    void add(unsigned level, unsigned column, const String& key, const String& value) {
        rows_.push_back(Row{level, column, key, value});
    }
    const VXVector<Row>& getRows() const { return rows_; }
    size_t size() const { return rows_.size(); }
    void clear() { rows_.clear(); }
    // One line per row, "key: value", indented by two blanks per level.
    String toString() const;

private:
    VXVector<Row> rows_;
};

class IInfo : public virtual IUnknown {
public:
    static const VX::UUID& IID();

    // Adds the component's rows to `info` and returns it. Rows are added only
    // while `depth` <= `depthLimit` and `column` <= `columnLimit`; `prefix`
    // goes in front of the key of the component's first row.
    virtual InfoContainer& getInfo(InfoContainer& info, unsigned depthLimit, unsigned depth,
                                   unsigned columnLimit, unsigned column,
                                   const String& prefix) const = 0;

protected:
    ~IInfo() override = default;
};

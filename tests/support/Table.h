#pragma once

#include <QTest>

#include <array>

/// The columns of a data-driven test; called with a row's name and values, it adds the row.
template <typename... Values>
class Table
{
public:
    template <typename... Names>
    explicit Table(Names... names)
    {
        (QTest::addColumn<Values>(names), ...);
    }
    void operator()(const char* name, Values... values) const { (QTest::newRow(name) << ... << values); }
};

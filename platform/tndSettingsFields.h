#pragma once

/// Turns a table of fields, rows of (type, name, default), into the body of an option record: per
/// field a getter get<Name>, a setter set<Name> and a member with the default.
#define TND_SETTINGS_MEMBER(type, name, initial)                                                   \
public:                                                                                            \
    type get##name() const                                                                         \
    {                                                                                              \
        return m_##name;                                                                           \
    }                                                                                              \
    void set##name(type value)                                                                     \
    {                                                                                              \
        m_##name = value;                                                                          \
    }                                                                                              \
                                                                                                   \
private:                                                                                           \
    type m_##name = initial;

#define TND_SETTINGS_EQUAL(type, name, initial) &&a.m_##name == b.m_##name
#define TND_SETTINGS_VISIT_CONST(type, name, initial) visit(#name, m_##name);

/// The whole record: members, comparison, and forEachField(visit), which calls
/// visit("Name", value) for each field in the order of the table.
#define TND_SETTINGS_RECORD(Class, FIELDS)                                                         \
    FIELDS(TND_SETTINGS_MEMBER)                                                                    \
public:                                                                                            \
    template <typename Visitor>                                                                    \
    void forEachField(Visitor &&visit) const                                                       \
    {                                                                                              \
        FIELDS(TND_SETTINGS_VISIT_CONST)                                                           \
    }                                                                                              \
    friend bool operator==(const Class &a, const Class &b)                                         \
    {                                                                                              \
        return true FIELDS(TND_SETTINGS_EQUAL);                                                    \
    }                                                                                              \
    friend bool operator!=(const Class &a, const Class &b)                                         \
    {                                                                                              \
        return !(a == b);                                                                          \
    }

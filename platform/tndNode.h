#pragma once

#include <QtCore/QMetaType>

/// Handle of a node in the host's scene. A value: it owns nothing, and it may name a node that is
/// gone. The default node and the node of id 0 are null.
class tndNode {
public:
    tndNode() = default;
    explicit tndNode(unsigned int id)
        : m_id(id)
    {
    }

    unsigned int id() const { return m_id; }
    bool isNull() const { return m_id == 0; }

    friend bool operator==(const tndNode &a, const tndNode &b) { return a.m_id == b.m_id; }
    friend bool operator!=(const tndNode &a, const tndNode &b) { return a.m_id != b.m_id; }

private:
    unsigned int m_id = 0;
};

Q_DECLARE_METATYPE(tndNode)

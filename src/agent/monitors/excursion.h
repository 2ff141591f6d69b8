// Once-per-excursion reporting: a value that goes past a limit is reported
// when it crosses, not at every sample, and the limit is armed again when
// the value comes back.
#ifndef NV_AGENT_MONITORS_EXCURSION_H
#define NV_AGENT_MONITORS_EXCURSION_H

namespace nvmonit {

class Excursion {
public:
    // Feeds whether the latest sample is past the limit; true when this
    // sample starts an excursion and must be reported.
    bool Crossed(bool past) {
        bool start = past && !m_past;
        m_past = past;
        return start;
    }
    bool Past() const { return m_past; }
    void Reset() { m_past = false; }

private:
    bool m_past = false;
};

}  // namespace nvmonit

#endif

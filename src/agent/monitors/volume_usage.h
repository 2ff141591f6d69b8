// Measuring a monitored volume: a block device is resolved to the place it
// is mounted through the mount table, anything else is measured where it
// is; the use comes from statvfs.
#ifndef NV_AGENT_MONITORS_VOLUME_USAGE_H
#define NV_AGENT_MONITORS_VOLUME_USAGE_H

#include <string>

namespace nvmonit {

struct VolumeUsage {
    bool bOk = false;
    std::string sMountPoint;  // what was measured
    long long llUsedMb = 0;
    long long llTotalMb = 0;
    std::string sError;  // why it could not be measured
};

// Where the block device with this device number is mounted, from
// <procDir>/self/mountinfo; empty when it is not mounted.
std::string MountPointOfDevice(const std::string& procDir, unsigned long long rdev);

VolumeUsage MeasureVolume(const std::string& partition, const std::string& procDir = "/proc");

// What a volume whose file system did not answer in time shows: sError
// "no answer".
VolumeUsage NoAnswer();

}  // namespace nvmonit

#endif

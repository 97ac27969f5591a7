// Fixed paths and event details shared by the configuration archive and its USB backup.
#ifndef SYSCOMMON_MAINT_CONFIG_PATHS_H
#define SYSCOMMON_MAINT_CONFIG_PATHS_H

namespace syscommon::maint {

inline constexpr const char *kRamdisk = "/mnt/ramdisk";
inline constexpr const char *kConfigArchive = "/mnt/ramdisk/TARN_CFG.ini";
// The further argument with which the configuration events reach the log agent.
inline constexpr int kConfigEventArgument = 4;

}  // namespace syscommon::maint

#endif

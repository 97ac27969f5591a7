/* Export and linkage macros shared by every public header of libsyscommon. */
#ifndef SYSCOMMON_EXPORT_H
#define SYSCOMMON_EXPORT_H

#define SYSCOMMON_API __attribute__((visibility("default")))

#ifdef __cplusplus
#define SYSCOMMON_BEGIN_DECLS extern "C" {
#define SYSCOMMON_END_DECLS }
#define SYSCOMMON_STATIC_ASSERT(cond, msg) static_assert(cond, msg)
#else
#define SYSCOMMON_BEGIN_DECLS
#define SYSCOMMON_END_DECLS
#define SYSCOMMON_STATIC_ASSERT(cond, msg) _Static_assert(cond, msg)
#endif

#endif

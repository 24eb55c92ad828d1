#ifndef LUMO_CORE_LOGLINE_H
#define LUMO_CORE_LOGLINE_H

/// Writes one line "TIME [INFO] MESSAGE File:%s, Func:%s, Line:%d" to CLumoLogger, where TIME is the
/// text of asctime with its newline. `message` is a printf format for the arguments that follow. Of a
/// longer line the first 4096 bytes are written. Safe from any thread.
void writeLogLine(const char* file, const char* function, int line, const char* message, ...)
    __attribute__((format(printf, 4, 5)));

/// A line of a method of CLumoDataMgr, with the number of the line where the macro is used.
#define LUMO_LOG(function, ...) writeLogLine("LumoDataMgr", function, __LINE__, __VA_ARGS__)

#endif

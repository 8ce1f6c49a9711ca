#pragma once

namespace host
{

/// Prepares the standard streams. Call it first of all, before the program opens a file or starts a thread.
///
/// It occupies the descriptors of closed streams. Otherwise the next file that the program opens would get such a
/// descriptor, and the program would read it as its input or write its output to it. It also ignores SIGPIPE, so that a
/// write to a pipe without a reader fails with a reason, and the program can complete its files.
///
/// Throws `Error` when the standard output is closed.
void PrepareStandardStreams();

/// The standard input was closed when the program started. [any] After `PrepareStandardStreams`.
bool IsStandardInputClosed();

} // namespace host

#pragma once

#include <QByteArray>

/// Decodes pictures of a format with damage that follows from the seeds `from` to `from + count - 1`. What does not
/// keep what the decoder promises is told on stdout by its seed. Returns how many did not.
int tryMutations(const QByteArray &format, quint32 from, int count);

/// Decodes the good pictures of a format cut off at every `steps`th part of their length, likewise.
int tryCuts(const QByteArray &format, int steps);

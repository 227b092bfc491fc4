#pragma once

#include <QString>

/// Writes good pictures into a folder, in the variants of each format that Qt writes, small enough to be decoded very
/// often: KIND-NAME, where KIND is "png", "jpeg" or "webp".
void makePictures(const QString &folder);

/// Decodes the pictures of a kind in a folder, cut off at `cuts` parts of their length, and then `mutations` with
/// damage that follows from a seed, the first being `seed`. What does not keep what the decoder promises is told on
/// stdout. Returns how many did not.
int tryDamage(const QString &folder, const QString &kind, int cuts, quint32 seed, int mutations);

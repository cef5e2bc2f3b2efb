#pragma once

#include <QByteArray>
#include <QString>

// The type classes of a file, decided from its name extension alone (never from its contents)
// through the shared MIME database, cached by lower-case extension.
namespace FileType {

enum class Class { Image, AudioVisual, Pdf, SourceCode, Text, Archive, Other };

Class classOfExtension(const QByteArray& extension);
Class classOfPath(const QByteArray& path);

bool isImage(Class c);
bool isAudioVisual(Class c);

// Group category numbers.
enum Category { AllTypes = 10, Folder = 20, Archive = 30, Text = 40, Photo = 50, Media = 60, Other = 70 };

// The category of a regular file: image, then audio-visual, then text/source/PDF, then archive.
int categoryOfRegularFile(const QByteArray& path);
// The member text of the older list: "Folder", "Photo", "Media", "Text" or "Other" (no archive
// class) for a category number.
QString typeTextOfCategory(int category);
QString typeTextOfRegularFile(const QByteArray& path);

// The MIME type name chosen for an extension (for icons and the preview).
QString mimeNameOfPath(const QByteArray& path);

} // namespace FileType

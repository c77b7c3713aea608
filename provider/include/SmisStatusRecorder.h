#ifndef ORVSMIS_SMISSTATUSRECORDER_H
#define ORVSMIS_SMISSTATUSRECORDER_H

namespace orvsmis {

// The status file "/opt/pegasus/etc/status" tells outside tools how the
// provider stands: one blank and a word such as "ready", no line end. Two
// layers report into it: the provider (smis layer) and the polling link. The
// file shows the worse of the two: while the link is abnormal the provider's
// words are held back, and while the provider is abnormal so are the link's.
// Status values: 0 not ready, 1 ready, 2 abnormal.

// Creates or empties the lock file "/opt/pegasus/etc/status.lock" (0644).
// False, with a trace, when it cannot be made.
bool InitializeStatusFile();

// Writes text when the polling link is ready and value differs from the
// provider's last value; the provider's value is taken either way.
void RecordSmisLayerStatus(int value, const char* text);

// Writes text when the provider is not abnormal and value differs from the
// link's last value; the link's value is taken either way.
void RecordPollingStatus(int value, const char* text);

// Replaces the status file's content with " " + text under a file lock on the
// lock file. False, with a trace, when the file cannot be written.
bool WriteStatus(const char* text);

}  // namespace orvsmis

#endif

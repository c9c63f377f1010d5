#pragma once

// Which title belongs to which registration: the liveries' own registrations, the downloaded list and the
// user's files, each outranking the one before. Worker, while no scan task runs.

namespace kst {

/// Puts the registrations of `scannedLiveries` into the matcher's tables, each with the first title that has
/// it; the clashes go to InlineRegcodes.txt. Needs the airline index.
void gf_inlineRegcodes();

/// Applies the downloaded list and the user's files to the matcher's tables and writes OfflineRegcodes.txt.
/// What cannot be had or read is logged; the rest applies.
void gf_readRegcodeSources();

/// Fills `dontUseTitles` from the downloaded list and the user's files, before a scan. What cannot be had or
/// read is logged.
void gf_readDontUseTitles();

} // namespace kst

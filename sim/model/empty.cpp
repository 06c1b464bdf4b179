// Replaced by the first model source.

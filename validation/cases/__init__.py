"""Cases: each yields rows that hold figures of runs to closed forms."""

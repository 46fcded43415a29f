"""Closed forms, each with its source; lengths in any one unit, angles in degrees."""

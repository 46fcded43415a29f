"""What scripts/plot is made of: reading planes and tables, and drawing them."""

# Commands of examples/lens-on-fibre.cfg: the field of one gap, and the coupling of eleven.
zerith -p --fast -x 1 -l 80 -i lens-on-fibre.cfg --set layer3.z=50000 --field field.vtkhdf
scripts/plot field.vtkhdf --log --index N_sys.csv
zerith -q -p --fast -i lens-on-fibre.cfg --sweep layer3.z=30000:80000:5000 --jobs 2 --table coupling.csv
scripts/plot coupling.csv

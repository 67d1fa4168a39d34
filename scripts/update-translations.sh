#!/usr/bin/env bash
# Gathers the window's tr() strings into translations/*.ts. New strings come
# in unfinished, with English as their only text, for a translator to fill in
# (Qt Linguist, or by hand); strings no longer in the code are dropped. The
# build compiles the .ts files itself.
set -euo pipefail
cd "$(dirname "$0")/.."
bin=$(qtpaths6 --query QT_HOST_BINS 2>/dev/null || echo /usr/lib/qt6/bin)
for ts in translations/tunebox_*.ts; do
    language=${ts#translations/tunebox_}
    "$bin/lupdate" -silent -no-obsolete -locations none -I src -source-language en \
        -target-language "${language%.ts}" src/app -ts "$ts"
done

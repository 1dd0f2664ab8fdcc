# SQLite takes the schema and the rows that the SQL example makes, and finds them again.
sql=$("$QZEXPAND" "$EXAMPLES/sql/planets.sql.qz")
sqlite3 -bail :memory: "PRAGMA foreign_keys = ON; $sql
    SELECT planet.name, count(*) FROM moon JOIN planet ON planet.id = moon.planet
    GROUP BY planet.id;
    SELECT name FROM moon WHERE id = 8;" | diff - <(
  printf '%s\n' 'Earth|1' 'Mars|2' 'Jupiter|5' "Kore's friend")

// The tables of the diagnostic database, shared by the host that writes it and the programs that read it.
#pragma once

#include <cstdint>

namespace sharedanalysis::host {

// In the header of the file, so that it is known from other databases: "SADD".
constexpr int32_t kDatabaseApplication = 0x53414444;
// Raised when readers of the version before would misread a file.
constexpr int32_t kDatabaseVersion = 1;

enum class DiagnosticClass : int32_t {
  Error = 1,
  Internal,
  Warning,
  Element,
  Contact,
  Cutback,
  Residual,
  Compatibility
};

// Columns with the name of a table hold ids of it.  Times of the wall are seconds since the job was opened.
constexpr const char* kDatabaseTables = R"sql(
CREATE TABLE statuses (id INTEGER PRIMARY KEY, name TEXT NOT NULL);
INSERT INTO statuses VALUES (-1, 'none'), (0, 'unknown'), (1, 'completed'), (2, 'aborted'), (3, 'interrupted');

CREATE TABLE run (
  id INTEGER PRIMARY KEY CHECK (id = 1),
  job TEXT NOT NULL,
  host TEXT NOT NULL,               -- machine
  process INTEGER NOT NULL,
  program TEXT NOT NULL,            -- title of the analysis host
  started TEXT NOT NULL,            -- UTC
  ended TEXT,                       -- UTC; NULL while running and after a crash
  elapsed REAL,                     -- wall time at the end
  rank INTEGER NOT NULL,
  domains INTEGER,
  double_precision INTEGER,
  renumbered INTEGER,
  valid INTEGER,
  in_parts INTEGER NOT NULL,
  execution_code INTEGER NOT NULL,
  status INTEGER NOT NULL REFERENCES statuses,
  incomplete INTEGER NOT NULL       -- 1: records were lost by a write error
);

CREATE TABLE active_status (position INTEGER PRIMARY KEY, active INTEGER NOT NULL);

CREATE TABLE steps (
  id INTEGER PRIMARY KEY,
  solver TEXT NOT NULL,             -- implicit, explicit
  number INTEGER NOT NULL,
  name TEXT NOT NULL,
  procedure INTEGER NOT NULL,
  flag1 INTEGER, flag2 INTEGER,     -- as the solver gave them
  incrementation INTEGER,           -- 1 fixed, 2 automatic, 3 by the user
  control1 REAL, control2 REAL, control3 REAL, control4 REAL, control_count INTEGER,
  equation_solver INTEGER,          -- 0 direct, 1 iterative
  extrapolation INTEGER,            -- 0 none, 1 linear, 2 parabolic
  characteristic_length REAL,
  unsymmetric INTEGER NOT NULL,
  nlgeom INTEGER NOT NULL,
  stabilize_factor REAL,
  began REAL NOT NULL, ended REAL   -- wall
);

CREATE TABLE increments (
  id INTEGER PRIMARY KEY,
  step INTEGER REFERENCES steps,    -- NULL: outside a step
  number INTEGER NOT NULL,
  time_increment REAL,
  time REAL,                        -- at its end; NULL until then
  converged INTEGER,                -- explicit: complete; NULL until its end
  attempts INTEGER NOT NULL,        -- counts of what the other tables hold of it
  iterations INTEGER NOT NULL,
  cutbacks INTEGER NOT NULL,
  errors INTEGER NOT NULL,
  warnings INTEGER NOT NULL,
  began REAL NOT NULL, ended REAL   -- wall
);

CREATE TABLE attempts (
  id INTEGER PRIMARY KEY,
  increment INTEGER NOT NULL REFERENCES increments,
  number INTEGER NOT NULL,
  time_increment REAL,
  needs_reordering INTEGER,
  ended INTEGER NOT NULL
);

CREATE TABLE iterations (
  id INTEGER PRIMARY KEY,
  increment INTEGER NOT NULL REFERENCES increments,
  attempt INTEGER REFERENCES attempts,
  number INTEGER NOT NULL,          -- in the attempt
  converged INTEGER,
  severe_discontinuity INTEGER,
  penetration_exceeded INTEGER,
  separation_too_large INTEGER,
  ended INTEGER NOT NULL
);

CREATE TABLE contact_iterations (
  id INTEGER PRIMARY KEY,
  increment INTEGER NOT NULL REFERENCES increments,
  iteration INTEGER REFERENCES iterations,
  number INTEGER NOT NULL,          -- in the iteration
  converged INTEGER,
  ended INTEGER NOT NULL
);

CREATE TABLE classes (id INTEGER PRIMARY KEY, name TEXT NOT NULL, is_problem INTEGER NOT NULL);
INSERT INTO classes VALUES (1, 'error', 1), (2, 'internal', 1), (3, 'warning', 1), (4, 'element', 1), (5, 'contact', 1),
  (6, 'cutback', 1), (7, 'residual', 0), (8, 'compatibility', 0);

-- What has occurred: each code of each class once.
CREATE TABLE codes (
  id INTEGER PRIMARY KEY,
  class INTEGER NOT NULL REFERENCES classes,
  code INTEGER NOT NULL,            -- type code; reason of a cutback; field of a residual; constraint of a compatibility
  name TEXT,
  is_error INTEGER NOT NULL,
  detail TEXT,                      -- text of the code, with placeholders
  count INTEGER NOT NULL,
  first_diagnostic INTEGER REFERENCES diagnostics,
  last_diagnostic INTEGER REFERENCES diagnostics,
  UNIQUE (class, code)
);

CREATE TABLE diagnostics (
  id INTEGER PRIMARY KEY,           -- sequence number
  code INTEGER NOT NULL REFERENCES codes,
  domain INTEGER,                   -- rank that it comes from; NULL: implicit solver
  kind INTEGER,                     -- of a residual
  step INTEGER REFERENCES steps,
  increment INTEGER REFERENCES increments,
  attempt INTEGER REFERENCES attempts,
  iteration INTEGER REFERENCES iterations,
  contact_iteration INTEGER REFERENCES contact_iterations,
  text TEXT                         -- NULL: the detail of its code, which has no placeholders
);

CREATE TABLE int_values (
  diagnostic INTEGER NOT NULL REFERENCES diagnostics, position INTEGER NOT NULL, value INTEGER NOT NULL,
  PRIMARY KEY (diagnostic, position)) WITHOUT ROWID;
CREATE TABLE real_values (
  diagnostic INTEGER NOT NULL REFERENCES diagnostics, position INTEGER NOT NULL, value REAL, -- NULL: not a number
  PRIMARY KEY (diagnostic, position)) WITHOUT ROWID;
CREATE TABLE string_values (
  diagnostic INTEGER NOT NULL REFERENCES diagnostics, position INTEGER NOT NULL, value TEXT NOT NULL,
  PRIMARY KEY (diagnostic, position)) WITHOUT ROWID;

-- Names of instances and marks, each stored once.
CREATE TABLE names (id INTEGER PRIMARY KEY, name TEXT NOT NULL UNIQUE);

CREATE TABLE nodes (
  diagnostic INTEGER NOT NULL REFERENCES diagnostics, position INTEGER NOT NULL,
  instance INTEGER NOT NULL REFERENCES names, label INTEGER NOT NULL,
  PRIMARY KEY (diagnostic, position)) WITHOUT ROWID;
CREATE TABLE elements (
  diagnostic INTEGER NOT NULL REFERENCES diagnostics, position INTEGER NOT NULL,
  instance INTEGER NOT NULL REFERENCES names, label INTEGER NOT NULL,
  PRIMARY KEY (diagnostic, position)) WITHOUT ROWID;

CREATE TABLE status_records (
  id INTEGER PRIMARY KEY,
  step INTEGER REFERENCES steps,
  increment INTEGER REFERENCES increments,
  status INTEGER NOT NULL,
  instance INTEGER NOT NULL REFERENCES names, label INTEGER NOT NULL, -- node
  value1 REAL, value2 REAL, value3 REAL, value4 REAL, value5 REAL, value6 REAL, value7 REAL, value8 REAL, value9 REAL
);

CREATE TABLE resource_marks (
  id INTEGER PRIMARY KEY,
  name INTEGER NOT NULL REFERENCES names,
  elapsed REAL NOT NULL,            -- wall
  processor REAL NOT NULL,          -- processor time of the process, s
  peak_memory INTEGER NOT NULL      -- bytes
);

-- Every diagnostic in words.
CREATE VIEW messages AS
  SELECT d.id, k.name AS class, c.code, c.name, c.is_error, d.domain, s.number AS step, i.number AS increment,
         a.number AS attempt, t.number AS iteration, i.time, coalesce(d.text, c.detail, '') AS text
  FROM diagnostics d JOIN codes c ON c.id = d.code JOIN classes k ON k.id = c.class
  LEFT JOIN increments i ON i.id = d.increment LEFT JOIN steps s ON s.id = d.step
  LEFT JOIN attempts a ON a.id = d.attempt LEFT JOIN iterations t ON t.id = d.iteration;

-- Where: the nodes and elements of every diagnostic.
CREATE VIEW places AS
  SELECT e.diagnostic, 'element' AS kind, n.name AS instance, e.label FROM elements e JOIN names n ON n.id = e.instance
  UNION ALL
  SELECT e.diagnostic, 'node', n.name, e.label FROM nodes e JOIN names n ON n.id = e.instance;

-- What went wrong and how often; errors first.
CREATE VIEW problems AS
  SELECT k.name AS class, c.code, c.name, c.is_error, c.count,
         f.step AS first_step, f.increment AS first_increment, f.time AS first_time,
         l.step AS last_step, l.increment AS last_increment, l.time AS last_time, f.text AS first_text
  FROM codes c JOIN classes k ON k.id = c.class
  JOIN messages f ON f.id = c.first_diagnostic JOIN messages l ON l.id = c.last_diagnostic
  WHERE k.is_problem ORDER BY c.is_error DESC, c.class, c.count DESC, c.first_diagnostic;

-- How a step went.
CREATE VIEW step_summary AS
  SELECT s.number AS step, s.name, s.solver, count(i.id) AS increments, sum(i.attempts) AS attempts,
         sum(i.iterations) AS iterations, sum(i.cutbacks) AS cutbacks, sum(i.errors) AS errors,
         sum(i.warnings) AS warnings, max(i.time) AS time, min(i.time_increment) AS smallest_time_increment,
         max(i.time_increment) AS largest_time_increment, s.ended - s.began AS wall
  FROM steps s LEFT JOIN increments i ON i.step = s.id GROUP BY s.id;

-- How often an increment was attempted, and why again.
CREATE VIEW attempt_summary AS
  SELECT s.number AS step, i.number AS increment, a.number AS attempt, a.time_increment,
         coalesce(t.count, 0) AS iterations, max(CASE c.class WHEN 6 THEN coalesce(c.detail, '') END) AS cutback
  FROM attempts a JOIN increments i ON i.id = a.increment LEFT JOIN steps s ON s.id = i.step
  LEFT JOIN (SELECT attempt, count(*) AS count FROM iterations GROUP BY attempt) t ON t.attempt = a.id
  LEFT JOIN diagnostics d ON d.attempt = a.id LEFT JOIN codes c ON c.id = d.code GROUP BY a.id;

-- Where time and memory went: from each mark to the next.
CREATE VIEW phases AS
  SELECT n.name AS mark, count(*) AS count, sum(p.next_elapsed - p.elapsed) AS wall,
         sum(p.next_processor - p.processor) AS processor, max(p.peak_memory) AS peak_memory
  FROM (SELECT name, elapsed, processor, peak_memory, lead(elapsed) OVER w AS next_elapsed,
               lead(processor) OVER w AS next_processor FROM resource_marks WINDOW w AS (ORDER BY id)) p
  JOIN names n ON n.id = p.name GROUP BY p.name ORDER BY wall DESC;
)sql";

} // namespace sharedanalysis::host

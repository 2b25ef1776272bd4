#!/usr/bin/env node
// Writes one HL7 v2 version as a definition source (docs/definition-language.md) from the data of
// the npm package hl7-dictionary (MIT licence, Copyright 2015 Fernando Serrano).
//
//   npm install --prefix /tmp/hl7-dictionary hl7-dictionary
//   NODE_PATH=/tmp/hl7-dictionary/node_modules node standards/hl7/generate.js 2.5 > standards/hl7/hl7-v2.5.yaml
//
// The package is only needed to regenerate; the build compiles the committed output.
'use strict';

const dictionary = require('hl7-dictionary');

const version = process.argv[2];
if (!version || !dictionary.definitions[version]) {
  const known = Object.keys(dictionary.definitions).join(', ');
  process.stderr.write(`usage: generate.js VERSION   (one of ${known})\n`);
  process.exit(1);
}
const definition = dictionary.definitions[version];
const tables = dictionary.tables;
const packageVersion = require('hl7-dictionary/package.json').version;

// Text types that may carry formatting commands (\\.br\\, \\H\\, \\X0D\\ ...), and VARIES, which holds them
// in OBX-5: an escape sequence between two escape characters is read and written as it stands.
const kFormattedTextTypes = new Set(['FT', 'TX', 'VARIES']);

// Table 0354 names the trigger events that each message structure carries.
const kStructureTable = '354';

// ----- names

// A description becomes a name of letters and digits: "Date/Time of Birth" -> "DateTimeOfBirth".
// The segment's own name at the end ("Set ID - PID") only repeats where the field stands.
function nameOf(description, owner) {
  let text = description.replace(/_s\b/g, 's').replace(/ _ /g, ' - ').replace(/\*/g, '');
  if (owner) text = text.replace(new RegExp(`\\s*-\\s*${owner}\\s*$`), '');
  text = text.replace(/'/g, '');
  const words = text.split(/[^A-Za-z0-9]+/).filter((word) => word.length > 0);
  let name = words
    .map((word) => {
      const rest = word === word.toUpperCase() ? word.slice(1).toLowerCase() : word.slice(1);
      return word[0].toUpperCase() + rest;
    })
    .join('');
  if (name === '') name = 'Field';
  // A name of digits alone would read as an index in a path.
  if (/^[0-9]/.test(name)) name = `N${name}`;
  return name;
}

// Names within one segment or composite must differ: a repeated one gets its position behind it.
function uniqueNames(descriptions, owner) {
  const names = descriptions.map((description) => nameOf(description, owner));
  const seen = new Map();
  for (const name of names) seen.set(name, (seen.get(name) || 0) + 1);
  return names.map((name, index) => (seen.get(name) > 1 ? `${name}${index + 1}` : name));
}

const tableName = (number) => `HL7${String(number).padStart(4, '0')}`;

// Free text goes out as a double-quoted YAML scalar, which JSON's quoting is.
const quoted = (text) => JSON.stringify(String(text));

// ----- data types

const typeNames = Object.keys(definition.fields).sort();
const isPrimitive = (type) => definition.fields[type] && definition.fields[type].subfields.length === 0;
const isComposite = (type) => definition.fields[type] && definition.fields[type].subfields.length > 0;
const hasCompositeComponents = (type) =>
  definition.fields[type].subfields.some((component) => isComposite(component.datatype));

// HL7 has three levels below the segment: fields, components, subcomponents. A composite that
// stands as a component has its own components at the subcomponent level, where a composite of
// theirs would need a fourth separator. Such a composite gets a second form for that place, whose
// composite components are kept as their text.
const kSubcomponentSuffix = '_SUB';
const needsSubcomponentForm = new Set();
for (const type of typeNames) {
  if (!isComposite(type)) continue;
  for (const component of definition.fields[type].subfields)
    if (isComposite(component.datatype) && hasCompositeComponents(component.datatype))
      needsSubcomponentForm.add(component.datatype);
}

// The code tables that the version's fields name and that have values become validation tables.
// Fields of the HL7 table type ID are checked against theirs; user-defined tables (IS, coded
// composites) only suggest values, so those fields name their table in user data instead.
const usedTables = new Set();
function tableKeys(element) {
  if (element.table === undefined) return [];
  const table = tables[String(element.table)];
  if (!table || Object.keys(table.values || {}).length === 0) return [];
  usedTables.add(String(element.table));
  if (element.datatype === 'ID') return [`table: ${tableName(element.table)}`];
  return [`userData: {Table: ${tableName(element.table)}}`];
}

// One field of a segment or composite, as a flow mapping: of the composite named `composite`, or
// with none, of its primitive type (a composite type then kept as its text).
function fieldLine(name, element, composite) {
  const keys = [`name: ${name}`];
  const type = element.datatype;
  if (composite) {
    keys.push(`composite: ${composite}`);
  } else {
    keys.push(`dataType: ${isPrimitive(type) || type === kEncodingCharactersType ? type : 'string'}`);
    keys.push(...tableKeys(element));
  }
  if (element.opt === 2) keys.push('required: true');
  if (element.len > 0) keys.push(`maxLength: ${element.len}`);
  if (element.rep === 0) keys.push('maxRepeats: 0');
  else if (element.rep > 1) keys.push(`maxRepeats: ${element.rep}`);
  return `{${keys.join(', ')}}`;
}

// A segment's field of a composite type refers to the composite as it is.
const asField = (type) => (isComposite(type) ? type : undefined);

// A composite's component of a composite type stands one level down: in the second form of a
// composite it is text, elsewhere it refers to the composite's second form where there is one.
function asComponentOf(type, secondForm) {
  if (!isComposite(type) || secondForm) return undefined;
  return needsSubcomponentForm.has(type) ? type + kSubcomponentSuffix : type;
}

function compositeLines(type, secondForm) {
  const composite = definition.fields[type];
  const names = uniqueNames(composite.subfields.map((component) => component.desc));
  const lines = [`      - name: ${secondForm ? type + kSubcomponentSuffix : type}`];
  lines.push(`        userData: {Description: ${quoted(composite.desc)}}`);
  lines.push('        fields:');
  composite.subfields.forEach((component, index) =>
    lines.push(`          - ${fieldLine(names[index], component, asComponentOf(component.datatype, secondForm))}`));
  return lines;
}

// ----- segments

// MSH-1 and MSH-2 are not fields on the wire as this engine reads it: the set reads the separators
// they hold right behind the segment name, and the field separator then introduces MSH-3. The
// batch headers FHS and BHS have no separators of their own to read, so only their first field,
// the field separator itself, is dropped.
const kLeadingSeparatorFields = { MSH: 2, FHS: 1, BHS: 1 };

// Their encoding characters are then an ordinary field, whose value is made of separators that
// must stand as they are rather than be written as escapes.
const kEncodingCharactersType = 'EncodingCharacters';

function segmentLines(name) {
  const segment = definition.segments[name];
  const leading = kLeadingSeparatorFields[name] || 0;
  const fields = segment.fields.slice(leading);
  const names = uniqueNames(fields.map((field) => field.desc), name);
  const lines = [`      - name: ${name}`, `        userData: {Description: ${quoted(segment.desc)}}`];
  if (fields.length === 0) return lines;
  lines.push('        fields:');
  fields.forEach((field, index) => {
    const encodingCharacters = leading === 1 && index === 0;
    const element = encodingCharacters ? { ...field, datatype: kEncodingCharactersType } : field;
    lines.push(`          - ${fieldLine(names[index], element, asField(element.datatype))}`);
  });
  return lines;
}

// ----- message structures and their trigger events

// Where the set finds the message code and trigger event of a message: MSH-9.1 and MSH-9.2, by
// the names this version gives them ("MessageType/MessageCode" in 2.5, "MessageType/MessageType"
// before 2.5).
function messageTypePaths() {
  const fields = definition.segments.MSH.fields;
  const type = fields[8];
  const fieldName = uniqueNames(fields.slice(kLeadingSeparatorFields.MSH).map((field) => field.desc), 'MSH')[6];
  const components = uniqueNames(definition.fields[type.datatype].subfields.map((component) => component.desc));
  return [`MSH/${fieldName}/${components[0]}`, `MSH/${fieldName}/${components[1]}`];
}
const [kMessageCodePath, kTriggerEventPath] = messageTypePaths();

const codeOf = (structure) => structure.split('_')[0];

// The table lists an event under a structure of several events and under one named after it too
// (RPI_I01 and RPI_I04 both claim I04); the structure named after the event keeps it.
function eventsOf(structure) {
  const entry = tables[kStructureTable].values[structure];
  if (entry === undefined) return undefined;
  return entry
    .split(',')
    .map((event) => event.trim())
    .filter((event) => /^[A-Z0-9]{3}$/.test(event))
    .filter((event) => {
      const own = `${codeOf(structure)}_${event}`;
      return own === structure || !(own in tables[kStructureTable].values && own in definition.messages);
    });
}

// Events that a structure of table 0354 serves, by message code, so that a message of the package
// named after such an event (ADT_A04, served by ADT_A01) is not written a second time.
const served = new Set();
for (const structure of Object.keys(definition.messages))
  for (const event of eventsOf(structure) || []) served.add(`${codeOf(structure)}_${event}`);

// The message type of a structure: its code and its one event, or its code and any event, with
// a match list that names the events when there are several. ACK and the like carry any event.
function typeOf(structure) {
  const events = eventsOf(structure);
  const code = codeOf(structure);
  if (events && events.length === 1) return { type: `${code} ${events[0]}` };
  if (events && events.length > 1) return { type: `${code} <WILD>`, events };
  if (structure.includes('_')) {
    if (served.has(structure)) return undefined;
    return { type: `${code} ${structure.split('_')[1]}` };
  }
  return { type: `${code} <WILD>` };
}

function repeatKeys(item) {
  const keys = [];
  if (item.min > 0) keys.push('required: true');
  if (item.max === 0) keys.push('maxRepeats: 0');
  else if (item.max > 1) keys.push(`maxRepeats: ${item.max}`);
  return keys;
}

// Items of a message or group. A segment that stands twice among its siblings gets ":2" and so on
// behind its name, which the item key drops.
function itemLines(items, indent, missingSegments) {
  const pad = ' '.repeat(indent);
  const lines = [];
  const seen = new Map();
  const itemName = (name) => {
    const count = (seen.get(name) || 0) + 1;
    seen.set(name, count);
    return count > 1 ? `${name}:${count}` : name;
  };
  // Some versions of the package hold items without a name (2.7.1's CCM_I21): they name nothing
  // that a message could hold, and a group left without items goes with them.
  for (const item of items.filter((each) => each.name)) {
    if (item.children || item.compounds) {
      const inner = itemLines(item.children || item.compounds, indent + 4, missingSegments);
      if (inner.length === 0) continue;
      // A compound item is a choice of one segment among several.
      const name = item.children ? item.name : nameOf(item.desc).toUpperCase();
      lines.push(`${pad}- group: ${itemName(name)}`);
      if (item.compounds) lines.push(`${pad}  choice: true`);
      for (const key of repeatKeys(item)) lines.push(`${pad}  ${key}`);
      lines.push(`${pad}  items:`);
      lines.push(...inner);
      continue;
    }
    if (!definition.segments[item.name]) missingSegments.add(item.name);
    const name = itemName(item.name);
    const keys = [`segment: ${item.name}`];
    if (name !== item.name) keys.push(`name: "${name}"`);
    keys.push(...repeatKeys(item));
    lines.push(`${pad}- {${keys.join(', ')}}`);
  }
  return lines;
}

function messageLines(structure, missingSegments) {
  const message = definition.messages[structure];
  const type = typeOf(structure);
  if (!type) return [];
  const lines = [`      - name: ${structure}`, `        type: "${type.type}"`];
  if (type.events) lines.push(`        matches: [{path: ${kTriggerEventPath}, value: "(${type.events.join('|')})"}]`);
  lines.push(`        userData: {Description: ${quoted(message.desc)}}`);
  lines.push('        items:');
  lines.push(...itemLines(message.segments.segments, 10, missingSegments));
  return lines;
}

// ----- the file

const missingSegments = new Set();
const messages = Object.keys(definition.messages).sort().flatMap((structure) => messageLines(structure, missingSegments));
const segmentNames = Object.keys(definition.segments).sort();
const segments = segmentNames.flatMap(segmentLines);
for (const name of missingSegments) segments.push(`      - name: ${name}`);
const composites = typeNames
  .filter(isComposite)
  .flatMap((type) => [...compositeLines(type, false), ...(needsSubcomponentForm.has(type) ? compositeLines(type, true) : [])]);
const tableLines = [...usedTables]
  .sort((a, b) => Number(a) - Number(b))
  .flatMap((number) => {
    const table = tables[number];
    const lines = [`      - name: ${tableName(number)}`, '        entries:'];
    for (const [value, description] of Object.entries(table.values))
      lines.push(`          - {value: ${quoted(value)}, description: ${quoted(description)}}`);
    return lines;
  });
const setName = `HL7_${version.replace(/\./g, '_')}`;

const out = [
  `# HL7 v${version}, generated by standards/hl7/generate.js from the npm package hl7-dictionary ${packageVersion}.`,
  '# Do not edit: change the generator and run it again (standards/README.md).',
  '#',
  '# The data of hl7-dictionary is under the MIT licence:',
  '#   Copyright 2015 Fernando Serrano',
  '#   Permission is hereby granted, free of charge, to any person obtaining a copy of this software',
  '#   and associated documentation files (the "Software"), to deal in the Software without',
  '#   restriction, including without limitation the rights to use, copy, modify, merge, publish,',
  '#   distribute, sublicense, and/or sell copies of the Software, and to permit persons to whom the',
  '#   Software is furnished to do so, subject to the following conditions:',
  '#   The above copyright notice and this permission notice shall be included in all copies or',
  '#   substantial portions of the Software.',
  '#   THE SOFTWARE IS PROVIDED "AS IS", WITHOUT WARRANTY OF ANY KIND, EXPRESS OR IMPLIED, INCLUDING',
  '#   BUT NOT LIMITED TO THE WARRANTIES OF MERCHANTABILITY, FITNESS FOR A PARTICULAR PURPOSE AND',
  '#   NONINFRINGEMENT. IN NO EVENT SHALL THE AUTHORS OR COPYRIGHT HOLDERS BE LIABLE FOR ANY CLAIM,',
  '#   DAMAGES OR OTHER LIABILITY, WHETHER IN AN ACTION OF CONTRACT, TORT OR OTHERWISE, ARISING FROM,',
  '#   OUT OF OR IN CONNECTION WITH THE SOFTWARE OR THE USE OR OTHER DEALINGS IN THE SOFTWARE.',
  '#',
  '# Separators: the segment ends with a carriage return; the five characters right behind "MSH"',
  '# (MSH-1 and MSH-2) set the field, component, repetition, escape and subcomponent separators of',
  '# the message, and the field separator introduces every field, so that MSH writes as "MSH|^~\\&|".',
  '# MSH-1 and MSH-2 are thus no fields of MSH: its first field is MSH-3, Sending Application. A',
  '# separator inside data is written as its HL7 escape (\\F\\, \\S\\, \\R\\, \\T\\, \\E\\).',
  '# In the text types FT, TX and VARIES a sequence between two escape characters that is none of',
  '# these (a formatting command such as \\.br\\ or \\H\\) is read and written as it stands.',
  '#',
  '# Message types: a structure of one trigger event has the type "CODE EVENT"; one of several has',
  '# "CODE <WILD>" and a match list of its events on MSH-9.2 (table 0354), so that ADT^A04 finds',
  '# ADT_A01. Primitive data types are types of their own; every other data type is a composite, and',
  `# one that stands as a component has a second form with the suffix ${kSubcomponentSuffix}, whose composite`,
  '# components are kept as text (HL7 has no separator below the subcomponent).',
  'version: 883',
  'userData:',
  `  Name: ${quoted(`HL7 v${version}`)}`,
  `  Source: ${quoted(`hl7-dictionary ${packageVersion} (MIT)`)}`,
  'primitiveTypes:',
  ...typeNames.filter(isPrimitive).map((type) =>
    kFormattedTextTypes.has(type)
      ? `  - {name: ${type}, baseType: string, escapeCharacters: {start: user1, end: user1}}`
      : `  - {name: ${type}, baseType: string, plainAlias: true}`),
  `  - {name: ${kEncodingCharactersType}, baseType: string, allowedSeparators: [field2, repeat, user1, field3]}`,
  'messageSets:',
  `  - name: ${setName}`,
  '    trimSegments: true',
  '    separators:',
  '      segment: {value: "\\r", style: terminator}',
  "      field1: {value: '|', style: initiator, replacement: '\\F\\', fromField: MSH, position: 1}",
  "      field2: {value: '^', replacement: '\\S\\', fromField: MSH, position: 2}",
  "      repeat: {value: '~', replacement: '\\R\\', fromField: MSH, position: 3}",
  "      user1: {value: '\\', replacement: '\\E\\', fromField: MSH, position: 4}",
  "      field3: {value: '&', replacement: '\\T\\', fromField: MSH, position: 5}",
  `    messageTypeFields: [${kMessageCodePath}, ${kTriggerEventPath}]`,
  '    validationTables:',
  ...tableLines,
  '    composites:',
  ...composites,
  '    segments:',
  ...segments,
  '    messages:',
  ...messages,
];
process.stdout.write(out.join('\n') + '\n');

"""What the comparisons with other people's clients share."""
import collections
import csv
import json
import re
import sys

# The peers' words for ours.
WORDS = {'Other Units Based Sensor': 'Other', 'Watchdog 2': 'Watchdog',
         'Watchdog2': 'Watchdog', 'Button/Switch': 'Button',
         'Management Subsys Health': 'Management Subsystem Health',
         'Drive Slot': 'Drive Slot / Bay',
         'Microcontroller/Coprocessor': 'Microcontroller',
         'Processor Presence Detected': 'Presence detected',
         'Processor Presence detected': 'Presence detected',
         'Failure detected': 'Power Supply Failure Detected',
         'Power Supply AC lost': 'Power Supply Input Lost (AC/DC)',
         'Low': 'Battery Low (predictive failure)',
         'battery low': 'Battery Low (predictive failure)',
         'S0/G0': 'S0/G0 working', 'Log full': 'SEL Full',
         'Device Installed': 'Device Installed/Attached',
         'Slot/Connector Device installed/attached':
             'Device Installed/Attached',
         'Drive Present': 'Drive Presence',
         'Device Present': 'Device Inserted / Device Present'}


def escaped(text):
    """As we print what is not ASCII."""
    return re.sub(r'[\x80-\xff]', lambda m: f'\\x{ord(m[0]):02X}',
                  text.decode('latin-1'))


def read(name):
    with open(f'{sys.argv[1]}/{name}', 'rb') as file:
        return escaped(file.read()).rstrip('\n')


def load(name):
    with open(f'{sys.argv[1]}/{name}', encoding='utf-8') as file:
        return json.load(file)


def rows(name, delimiter):
    # Not splitlines: names that are not decoded hold control characters.
    return csv.reader(filter(None, read(name).split('\n')),
                      delimiter=delimiter, quoting=csv.QUOTE_NONE)


def plain(one):
    if isinstance(one, list):
        return sorted(map(plain, one))
    if isinstance(one, str):
        return re.sub(r'[\s/:-]+', '', WORDS.get(one, one).lower())
    return one


def same(ours, theirs):
    if isinstance(ours, float) and isinstance(theirs, str):
        # To the last digit; of a tie either neighbour is right.
        digits = len(theirs.partition('.')[2])
        return abs(ours - float(theirs)) <= 0.500001 * 10 ** -digits
    return plain(ours) == plain(theirs)


class Comparison:
    """Prints what differs, unless one of the rules says that it does: of which
    peer, in which fields, when (by our record, our value and theirs)."""
    def __init__(self, rules, same=same):
        self.rules, self.count = rules, collections.Counter()
        self.same = same

    def fail(self, text):
        self.count['failed'] += 1
        print(text)

    def compare(self, peer, one, field, theirs):
        ours = one.values.get(field)
        if self.same(ours, theirs):
            self.count['passed'] += ours is not None
        elif any(peer.startswith(by) and field in fields.split() and
                 when(one, ours, theirs) for by, fields, when in self.rules):
            self.count['listed'] += 1
        else:
            self.fail(f'{peer}: {one}: {field}: ours {ours!r}, '
                      f'theirs {theirs!r}')

    def finish(self):
        passed, failed = self.count['passed'], self.count['failed']
        print(f"{self.count['listed']} differ by a rule")
        print(f'{passed} passed, {failed} failed')
        sys.exit(failed != 0 or passed == 0)
